#include "x11/dialog_hints.h"

#include "x11/x_window.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

Atom atom(Display *display, const char *name) {
  return XInternAtom(display, name, False);
}

} // namespace

namespace td {

void set_dialog_hints(Display *display, Window window) {
  const Atom dialog = atom(display, "_NET_WM_WINDOW_TYPE_DIALOG");
  XChangeProperty(display, window, atom(display, "_NET_WM_WINDOW_TYPE"), XA_ATOM, 32,
                  PropModeReplace, reinterpret_cast<const unsigned char *>(&dialog), 1);
  // The root window stands for all windows of the application.
  XSetTransientForHint(display, window, DefaultRootWindow(display));
}

void set_icons(Display *display, Window window, const std::vector<unsigned long> &icons) {
  XChangeProperty(display, window, atom(display, "_NET_WM_ICON"), XA_CARDINAL, 32, PropModeReplace,
                  reinterpret_cast<const unsigned char *>(icons.data()),
                  static_cast<int>(icons.size()));
}

void activate_window(Display *display, Window window) {
  constexpr long from_application = 1;
  XEvent request = {};
  request.xclient.type = ClientMessage;
  request.xclient.window = window;
  request.xclient.message_type = atom(display, "_NET_ACTIVE_WINDOW");
  request.xclient.format = 32;
  request.xclient.data.l[0] = from_application;
  request.xclient.data.l[1] = CurrentTime;
  XMapRaised(display, window);
  XSendEvent(display, DefaultRootWindow(display), False,
             SubstructureRedirectMask | SubstructureNotifyMask, &request);
  // For a screen without a window manager. The click on the icon is not known to GNUstep, whose own
  // request would be refused as older than the last change of the focus.
  wait_until_viewable(display, window);
  XSetInputFocus(display, window, RevertToParent, CurrentTime);
}

} // namespace td
