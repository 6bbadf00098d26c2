/// Requests to the X server that GNUstep lacks: a window's real place on the screen, waiting until
/// it is shown, grabs.
#pragma once

struct _XDisplay; // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Xlib's

namespace td {

/// Pixels; x and y from the screen's top left corner.
struct ScreenRect {
  int x;
  int y;
  unsigned int width;
  unsigned int height;
};

/// The window's place on the screen. Also right for an embedded window, whose own position is
/// relative to its parent.
ScreenRect screen_rect(_XDisplay *display, unsigned long window);

/// Waits until the window and all its parents are mapped, for at most a second.
void wait_until_viewable(_XDisplay *display, unsigned long window);

/// Keeps window managers from placing and decorating the window, and from covering it. It must not
/// be mapped yet.
void leave_unmanaged(_XDisplay *display, unsigned long window);

/// Grabs the pointer and the keyboard for `window`; an open menu needs that to notice a click
/// outside it. Retries for at most a second while another program holds a grab.
void grab_input(_XDisplay *display, unsigned long window);
/// Ends both grabs.
void release_input(_XDisplay *display);

} // namespace td
