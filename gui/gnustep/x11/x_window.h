/// What GNUstep does not do with the X server: the desktop's system tray by the freedesktop.org
/// protocol, and what a window manager has made of a window.
#pragma once

struct _XDisplay; // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Xlib's

namespace td {

/// Asks the tray of the default screen to embed `window`, an X window not yet mapped, as a square
/// of `side` pixels, and waits until it has. Returns false when there is no tray or it takes too
/// long.
bool dock_in_tray(_XDisplay *display, unsigned long window, int side);

/// Pixels; x and y from the screen's top left corner.
struct ScreenRect {
  int x;
  int y;
  unsigned int width;
  unsigned int height;
};

/// Where the window is on the screen; right also for an embedded one, whose own position is that in
/// its parent.
ScreenRect screen_rect(_XDisplay *display, unsigned long window);

/// Waits until the window and those around it are on the screen, for at most a second.
void wait_until_viewable(_XDisplay *display, unsigned long window);

/// Has this client receive the pointer and the keyboard wherever they are, as `window`'s; an open
/// menu needs that to notice a click elsewhere. Waits for at most a second until it is possible.
void grab_input(_XDisplay *display, unsigned long window);
void release_input(_XDisplay *display);

} // namespace td
