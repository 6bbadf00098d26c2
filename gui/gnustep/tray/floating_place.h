/// Where the icon floats while there is no tray.
#pragma once

#include "x11/connection.h"

namespace td {

/// How many pixels the desktop wants for one of an ordinary screen: 1, 1.5, 2 and so on.
double pixel_density(Connection &connection);

/// The top right corner, for a square of `side` pixels, of the part of `monitor` that the desktop's
/// bars leave free.
ScreenRect floating_place(Connection &connection, ScreenRect monitor, int side);

/// Whether the window that the user works with fills the whole screen, bars included.
bool is_full_screen_in_use(Connection &connection);

} // namespace td
