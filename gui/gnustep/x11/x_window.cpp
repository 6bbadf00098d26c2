#include "x11/x_window.h"

#include <chrono>
#include <ctime>
#include <string>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

constexpr long embed_version = 0;
constexpr long embed_mapped = 1;
constexpr long request_dock_opcode = 0;
constexpr std::chrono::seconds dock_timeout(2);
constexpr std::chrono::seconds show_timeout(1);
constexpr std::chrono::seconds grab_timeout(1);
constexpr timespec poll_interval{0, 5'000'000};

/// Calls `ask` until it returns true; returns false on timeout. The X server does not always send
/// an event for what other programs do to a window, hence the polling.
template <typename Ask> bool poll(std::chrono::seconds timeout, Ask ask) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  while (!ask()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    // A signal may end the sleep early (EINTR): then the next call comes sooner. Resuming the sleep
    // could take forever if signals keep arriving.
    nanosleep(&poll_interval, nullptr);
  }
  return true;
}

Window tray_owner(Display *display) {
  const std::string name = "_NET_SYSTEM_TRAY_S" + std::to_string(DefaultScreen(display));
  return XGetSelectionOwner(display, XInternAtom(display, name.c_str(), False));
}

void announce_embedding(Display *display, Window window) {
  const Atom info = XInternAtom(display, "_XEMBED_INFO", False);
  const long data[] = {embed_version, embed_mapped};
  XChangeProperty(display, window, info, info, 32, PropModeReplace,
                  reinterpret_cast<const unsigned char *>(data), 2);
}

/// The hints of a square window. Trays use a window's minimum size.
XSizeHints square_hints(int side) {
  XSizeHints hints = {};
  hints.flags = PMinSize | PBaseSize;
  hints.min_width = hints.base_width = side;
  hints.min_height = hints.base_height = side;
  return hints;
}

/// Asks the tray to embed the window. False: there is no tray.
bool request_dock(Display *display, Window window) {
  const Window owner = tray_owner(display);
  if (owner == None) {
    return false;
  }
  XEvent request = {};
  request.xclient.type = ClientMessage;
  request.xclient.window = owner;
  request.xclient.message_type = XInternAtom(display, "_NET_SYSTEM_TRAY_OPCODE", False);
  request.xclient.format = 32;
  request.xclient.data.l[0] = CurrentTime;
  request.xclient.data.l[1] = request_dock_opcode;
  request.xclient.data.l[2] = static_cast<long>(window);
  return XSendEvent(display, owner, False, NoEventMask, &request) != 0;
}

bool is_embedded(Display *display, Window window) {
  Window root = None, parent = None, *children = nullptr;
  unsigned int count = 0;
  if (XQueryTree(display, window, &root, &parent, &children, &count) == 0) {
    return false;
  }
  if (children) {
    XFree(children);
  }
  return parent != root;
}

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

// A window is an integer to Xlib. NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
bool dock_in_tray(Display *display, Window window, int side) {
  if (tray_owner(display) == None) {
    return false;
  }
  announce_embedding(display, window);
  XSizeHints hints = square_hints(side);
  XSetWMNormalHints(display, window, &hints);
  return request_dock(display, window) &&
         poll(dock_timeout, [&] { return is_embedded(display, window); });
}

void wait_until_viewable(Display *display, Window window) {
  poll(show_timeout, [&] { return is_viewable(display, window); });
}

ScreenRect screen_rect(Display *display, Window window) {
  ScreenRect rect = {};
  Window root = None, child = None;
  int x = 0, y = 0;
  unsigned int border = 0, depth = 0;
  XGetGeometry(display, window, &root, &x, &y, &rect.width, &rect.height, &border, &depth);
  XTranslateCoordinates(display, window, root, 0, 0, &rect.x, &rect.y, &child);
  return rect;
}

void grab_input(Display *display, Window window) {
  // While the button that opened the menu is down, another program may hold a grab.
  poll(grab_timeout, [&] { return has_pointer(display, window) && has_keyboard(display, window); });
}

void release_input(Display *display) {
  XUngrabPointer(display, CurrentTime);
  XUngrabKeyboard(display, CurrentTime);
  XSync(display, False);
}

} // namespace td
