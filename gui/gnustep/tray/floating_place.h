/// Where the icon floats while there is no tray, and where a menu opens from a bar.
#pragma once

#include "x11/connection.h"

namespace td {

/// How many pixels the desktop wants for one of an ordinary screen: 1, 1.5, 2 and so on.
double pixel_density(Connection &connection);

/// The top right corner, for a square of `side` pixels, of the part of `monitor` that the desktop's
/// bars leave free.
ScreenRect floating_place(Connection &connection, ScreenRect monitor, int side);

/// The place of a point of the screen; if that is on one of the desktop's bars, the nearest place
/// beside it.
ScreenRect beside_bars(Connection &connection, int x, int y);

/// Whether the window that the user works with fills the whole screen, bars included.
bool is_full_screen_in_use(Connection &connection);

} // namespace td
