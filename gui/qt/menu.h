/// The icon's menu.
#pragma once

#include "tdgui.h"

#include <QMenu>
#include <functional>

namespace td {

/// What the items do that need more than the callbacks.
struct Commands {
  std::function<void()> open_dashboard;
  std::function<void()> open_settings;
  std::function<void()> quit;
};

/// Fills the empty menu, once for the whole run: a panel keeps the items that it has been told of
/// and may choose one much later. The callbacks are asked for the states now, each time the menu is
/// about to open, and after each choice; it shows them until the next time. `config` must outlive
/// the menu. Main thread only.
void fill_menu(QMenu &menu, const tdgui::GuiConfig &config, const Commands &commands);

} // namespace td
