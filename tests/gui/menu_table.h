/// The menu as a list, with which the tests of every system's interface compare theirs.
#pragma once

#include "record.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace gui_test {

struct Item {
  std::string text;    ///< without the state dot; of a separator: see below
  std::string dot;     ///< "green", "orange", "red" or none
  std::string key;     ///< "o" for Command-O or Ctrl+O
  bool enabled = true; ///< the flag that is set
  bool checked = false;
  std::vector<Item> submenu;
  /// The callbacks that choosing it calls; none if that does something else or nothing.
  std::optional<Calls> calls;
};

inline const std::string separator_text = "---";

/// What the menu must show for a config from recorded_config(), some of whose callbacks may have
/// been removed, and for the states in record().
std::vector<Item> expected_menu(const tdgui::GuiConfig &config);

/// One line for each item, a submenu's items below its own: for comparing menus and showing how
/// they differ.
std::vector<std::string> lines(const std::vector<Item> &menu);

/// Chooses each enabled item that calls callbacks, in the menu and its submenus, and expects its
/// calls. `choose` gets the item's index in the menu and, if it is in a submenu, its index there.
void expect_calls(const std::vector<Item> &menu,
                  const std::function<void(std::vector<std::size_t> place)> &choose);

} // namespace gui_test
