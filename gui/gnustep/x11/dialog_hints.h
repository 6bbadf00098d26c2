/// What a dialog asks of the window manager.
#pragma once

#include <vector>

struct _XDisplay; // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Xlib's

namespace td {

/// Asks for a dialog's decorations, without a button that minimises it, and for a place above the
/// application's other windows. `window` is not yet mapped.
void set_dialog_hints(_XDisplay *display, unsigned long window);

/// Gives the window icons: for each its width, its height and its pixels row by row, 0xAARRGGBB.
void set_icons(_XDisplay *display, unsigned long window, const std::vector<unsigned long> &icons);

/// Asks for the window to be shown, if it was minimised, in front and with the keyboard focus.
void activate_window(_XDisplay *display, unsigned long window);

} // namespace td
