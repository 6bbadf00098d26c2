/// The icon's menu.
#pragma once

#include "tdgui.h"

#include <QMenu>
#include <functional>

namespace td {

/// Fills the empty menu, once for the whole run: a panel keeps the items that it has been told of
/// and may choose one much later. The states are asked for now, each time the menu is about to
/// open, and after each choice. `config` must outlive the menu. Main thread only.
void fill_menu(QMenu &menu, const tdgui::GuiConfig &config,
               const std::function<void()> &open_dashboard, const std::function<void()> &quit);

} // namespace td
