#include "tray/tray_dock.h"

#include "x11/wait_until.h"

#include <string>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

constexpr long embed_version = 0;
constexpr long embed_mapped = 1;
constexpr long request_dock_opcode = 0;
constexpr std::chrono::seconds dock_timeout(2);

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
         wait_until(dock_timeout, [&] { return is_embedded(display, window); });
}

} // namespace td
