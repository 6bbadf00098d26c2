#include "menu_table.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace gui_test {
namespace {

using tdgui::GuiConfig;

Item separator() {
  return {separator_text, "", "", true, false, {}, {}};
}

Item caption(const std::string &text, const std::string &dot = "") {
  return {text, dot, "", false, false, {}, {}};
}

Item other_action(const std::string &text, const std::string &key) {
  return {text, "", key, true, false, {}, {}};
}

Item action(const std::string &text, const Calls &calls, bool enabled = true) {
  return {text, "", "", enabled, false, {}, calls};
}

Item opener(const std::string &text, const std::string &dot, const std::vector<Item> &submenu) {
  return {text, dot, "", true, false, submenu, {}};
}

/// `calls` when there is such a callback.
Calls if_set(bool callback, const Calls &calls) {
  return callback ? calls : Calls();
}

Calls joined(Calls first, const Calls &second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

bool all_running(const GuiConfig &config) {
  return std::all_of(config.components.begin(), config.components.end(),
                     [&](const auto &component) {
                       return !config.is_running || record().running.at(component.name);
                     });
}

Item component_row(const GuiConfig &config, const tdgui::Component &component) {
  const bool running = config.is_running && record().running.at(component.name);
  return opener(
      component.label + "   " + (running ? "running" : "stopped"), running ? "green" : "red",
      {action("Start", if_set(config.start, {"start " + component.name}), !running),
       action("Stop", if_set(config.stop, {"stop " + component.name}), running),
       action("Restart", if_set(config.restart, {"restart " + component.name}), running)});
}

Item all_components(const GuiConfig &config) {
  Calls start, stop;
  for (const tdgui::Component &component : config.components) {
    start.push_back("start " + component.name);
    stop.insert(stop.begin(), "stop " + component.name);
  }
  start = if_set(config.start, start);
  stop = if_set(config.stop, stop);
  return opener("All Components", "",
                {action("Start All", start), action("Stop All", stop),
                 action("Restart All", joined(stop, start))});
}

Item open_at_launch(const GuiConfig &config) {
  const bool on = config.open_browser_pref && record().open_browser;
  const bool acts = config.open_browser_pref && config.set_open_browser_pref;
  Item item = action("Open Dashboard at Launch",
                     if_set(acts, {on ? "open_browser off" : "open_browser on"}));
  item.checked = on;
  return item;
}

void add_lines(std::vector<std::string> &found, const std::vector<Item> &menu,
               const std::string &indent) {
  for (const Item &item : menu) {
    found.push_back(indent + (item.dot.empty() ? "" : "(" + item.dot + ") ") + item.text +
                    (item.key.empty() ? "" : ", key " + item.key) +
                    (item.checked ? ", checked" : "") + (item.enabled ? "" : ", disabled"));
    add_lines(found, item.submenu, indent + "  > ");
  }
}

void expect_calls_below(const std::vector<Item> &menu, const std::vector<std::size_t> &place,
                        const std::function<void(std::vector<std::size_t>)> &choose) {
  for (std::size_t i = 0; i < menu.size(); ++i) {
    std::vector<std::size_t> here = place;
    here.push_back(i);
    if (menu[i].calls && menu[i].enabled) {
      const Record before = record();
      record().calls.clear();
      choose(here);
      EXPECT_EQ(record().calls, *menu[i].calls) << menu[i].text;
      record() = before;
    }
    expect_calls_below(menu[i].submenu, here, choose);
  }
}

} // namespace

std::vector<Item> expected_menu(const GuiConfig &config) {
  std::vector<Item> menu = {caption(config.status, all_running(config) ? "green" : "orange"),
                            caption(config.url),
                            separator(),
                            other_action("Open Dashboard", "o"),
                            other_action("Copy Dashboard Address", "c"),
                            separator()};
  for (const tdgui::Component &component : config.components) {
    menu.push_back(component_row(config, component));
  }
  menu.insert(menu.end(), {separator(), all_components(config), separator(), separator(),
                           other_action("Settings…", ","), open_at_launch(config), separator(),
                           separator(), other_action("Quit Tandrel", "q")});
  return menu;
}

std::vector<std::string> lines(const std::vector<Item> &menu) {
  std::vector<std::string> found;
  add_lines(found, menu, "");
  return found;
}

void expect_calls(const std::vector<Item> &menu,
                  const std::function<void(std::vector<std::size_t>)> &choose) {
  expect_calls_below(menu, {}, choose);
}

} // namespace gui_test
