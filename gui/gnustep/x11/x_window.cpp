#include "x11/x_window.h"

#include "x11/wait_until.h"

#include <X11/Xlib.h>

namespace {

constexpr std::chrono::seconds show_timeout(1);

bool is_viewable(Display *display, Window window) {
  XWindowAttributes attributes;
  return XGetWindowAttributes(display, window, &attributes) != 0 &&
         attributes.map_state == IsViewable;
}

bool has_pointer(Display *display, Window window) {
  const unsigned int mask = ButtonPressMask | ButtonReleaseMask | PointerMotionMask;
  return XGrabPointer(display, window, True, mask, GrabModeAsync, GrabModeAsync, None, None,
                      CurrentTime) == GrabSuccess;
}

bool has_keyboard(Display *display, Window window) {
  return XGrabKeyboard(display, window, True, GrabModeAsync, GrabModeAsync, CurrentTime) ==
         GrabSuccess;
}

} // namespace

namespace td {

void wait_until_viewable(Display *display, Window window) {
  wait_until(show_timeout, [&] { return is_viewable(display, window); });
}

void leave_unmanaged(Display *display, Window window) {
  XSetWindowAttributes attributes = {};
  attributes.override_redirect = True;
  XChangeWindowAttributes(display, window, CWOverrideRedirect, &attributes);
}

bool grab_input(Display *display, Window window) {
  return has_pointer(display, window) && has_keyboard(display, window);
}

void release_input(Display *display) {
  XUngrabPointer(display, CurrentTime);
  XUngrabKeyboard(display, CurrentTime);
  XSync(display, False);
}

} // namespace td
