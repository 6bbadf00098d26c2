/// What is drawn: at any size, in the same colours in any theme, also where an item is disabled.
#pragma once

#include <QColor>
#include <QIcon>

namespace td {

/// The five bars of the menu bar's icon on a transparent ground.
QIcon bars_icon();

/// The bars on a dark tile with round corners: the floating icon, windows and dialogs.
QIcon tile_icon();

constexpr QColor green(40, 205, 65), orange(255, 149, 0), red(255, 59, 48);

/// The state of a component, or of all, as a dot of that colour.
QIcon state_dot(QColor colour);

} // namespace td
