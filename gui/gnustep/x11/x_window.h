/// Requests to the X server that GNUstep lacks: waiting until a window is shown, grabs.
#pragma once

struct _XDisplay; // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Xlib's

namespace td {

/// Waits until the window and all its parents are mapped, for at most a second.
void wait_until_viewable(_XDisplay *display, unsigned long window);

/// Keeps window managers from placing and decorating the window, and from covering it. It must not
/// be mapped yet.
void leave_unmanaged(_XDisplay *display, unsigned long window);

/// Grabs the pointer and the keyboard for `window`; an open menu needs that to notice a click
/// outside it. False: another program holds a grab.
bool grab_input(_XDisplay *display, unsigned long window);
/// Ends the grabs, if there are any.
void release_input(_XDisplay *display);

} // namespace td
