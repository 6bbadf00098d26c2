/// Requests to the X server that GNUstep lacks: embedding a window in the desktop's system tray
/// (freedesktop.org protocol), a window's real place on the screen, grabs.
#pragma once

struct _XDisplay; // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Xlib's

namespace td {

/// Asks the tray of the default screen to embed `window`, an X window not yet mapped, as a square
/// of `side` pixels, and waits until that is done. Returns false when there is no tray or after two
/// seconds.
bool dock_in_tray(_XDisplay *display, unsigned long window, int side);

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

/// Grabs the pointer and the keyboard for `window`; an open menu needs that to notice a click
/// outside it. Retries for at most a second while another program holds a grab.
void grab_input(_XDisplay *display, unsigned long window);
/// Ends both grabs.
void release_input(_XDisplay *display);

} // namespace td
