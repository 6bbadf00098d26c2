/// What is drawn: at any size, in the same colours in light and dark themes, and not greyed where
/// an item is disabled.
#pragma once

#include <QIcon>

namespace td {

/// The five bars of the menu bar's icon on a transparent ground.
QIcon bars_icon();

/// The bars on a dark tile with round corners: the floating icon, windows and dialogs.
QIcon tile_icon();

enum class DotColour { green, orange, red };

/// The state of a component, or of all.
QIcon state_dot(DotColour colour);

} // namespace td
