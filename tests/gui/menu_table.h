/// The menu as a list, to which the tests of every system's interface hold what that shows.
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
  /// The callbacks that choosing it calls; none when that does something else or nothing at all.
  std::optional<Calls> calls;
};

inline const std::string separator_text = "---";

/// What the menu must show for a config from recorded_config(), some of whose callbacks may have
/// been removed, and for the states in record().
std::vector<Item> expected_menu(const tdgui::GuiConfig &config);

/// One line for each item, those of a submenu below theirs: to compare menus and to see where they
/// differ.
std::vector<std::string> lines(const std::vector<Item> &menu);

/// Has each enabled item chosen that calls callbacks, in the menu and its submenus, and expects its
/// calls. `choose` gets the item's place in the menu and, if it is in a submenu, its place there.
void expect_calls(const std::vector<Item> &menu,
                  const std::function<void(std::vector<std::size_t> place)> &choose);

} // namespace gui_test
