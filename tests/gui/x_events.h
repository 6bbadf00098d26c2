/// The X server's side of the windows of the test's own process.
#pragma once

struct _XDisplay; // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Xlib's

namespace gui_test {

/// As if a part of the window had come into view.
void send_exposure(_XDisplay *display, unsigned long window);

/// As if the left button had been pressed in the window. It has been read from the server, but not
/// been handled, afterwards.
void send_press(_XDisplay *display, unsigned long window);

} // namespace gui_test
