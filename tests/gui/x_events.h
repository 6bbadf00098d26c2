/// Sends X events to windows of the test process.
#pragma once

struct _XDisplay; // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Xlib's

namespace gui_test {

/// Sends the event of a part of the window having become visible.
void send_exposure(_XDisplay *display, unsigned long window);

/// Sends the event of the left button having been pressed in the window. On return Xlib has read
/// the event, but the application has not handled it.
void send_press(_XDisplay *display, unsigned long window);

} // namespace gui_test
