/// Embeds a window in the desktop's system tray, by the freedesktop.org protocol.
#pragma once

struct _XDisplay; // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Xlib's

namespace td {

/// Asks the tray of the default screen to embed `window`, an X window not yet mapped, as a square
/// of `side` pixels, and waits until that is done. Returns false when there is no tray or after two
/// seconds.
bool dock_in_tray(_XDisplay *display, unsigned long window, int side);

} // namespace td
