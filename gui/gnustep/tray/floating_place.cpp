#include "tray/floating_place.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

constexpr int margin = 8;
constexpr int bar_room = 48; // for a bar at the top that nobody tells of
constexpr double ordinary_dpi = 96;

struct Edges {
  int left, top, right, bottom;
};

Edges edges_of(td::ScreenRect rect) {
  return {rect.x, rect.y, rect.x + static_cast<int>(rect.width),
          rect.y + static_cast<int>(rect.height)};
}

/// The part of `edges` that lies in `limits`; `edges` when none does.
Edges within(Edges edges, Edges limits) {
  const Edges common = {std::max(edges.left, limits.left), std::max(edges.top, limits.top),
                        std::min(edges.right, limits.right), std::min(edges.bottom, limits.bottom)};
  return common.left < common.right && common.top < common.bottom ? common : edges;
}

/// The screen without the room for a bar: window managers of Wayland desktops tell of none.
Edges guessed_work_area(td::Connection &connection) {
  Edges area = edges_of(connection.place_of(connection.root()));
  if (!connection.numbers(connection.root(), "_NET_SUPPORTING_WM_CHECK").empty()) {
    area.top += bar_room;
  }
  return area;
}

/// The current desktop's work area, if the window manager tells of one.
std::optional<Edges> told_work_area(td::Connection &connection) {
  const auto areas = connection.numbers(connection.root(), "_NET_WORKAREA");
  const auto desktop = connection.numbers(connection.root(), "_NET_CURRENT_DESKTOP");
  std::size_t first = desktop.empty() ? 0 : desktop[0] * std::size_t{4};
  if (first + 4 > areas.size()) {
    first = 0;
  }
  if (areas.size() < 4) {
    return std::nullopt;
  }
  return edges_of({static_cast<int>(areas[first]), static_cast<int>(areas[first + 1]),
                   areas[first + 2], areas[first + 3]});
}

Edges work_area(td::Connection &connection) {
  const auto told = told_work_area(connection);
  return told ? *told : guessed_work_area(connection);
}

} // namespace

namespace td {

double pixel_density(Connection &connection) {
  const std::string resources = "\n" + connection.text(connection.root(), "RESOURCE_MANAGER");
  const std::string name = "\nXft.dpi:";
  const auto found = resources.find(name);
  const double dpi = found == std::string::npos
                         ? ordinary_dpi
                         : std::strtod(resources.c_str() + found + name.size(), nullptr);
  return std::clamp(std::round(dpi / ordinary_dpi * 2) / 2, 1.0, 4.0);
}

ScreenRect floating_place(Connection &connection, ScreenRect monitor, int side) {
  const Edges screen = edges_of(connection.place_of(connection.root()));
  const Edges shown = within(edges_of(monitor), screen);
  const Edges free = within(shown, work_area(connection));
  const auto size = static_cast<unsigned int>(side);
  return {std::max(free.left, free.right - side - margin),
          std::max(free.top, std::min(free.top + margin, free.bottom - side)), size, size};
}

ScreenRect beside_bars(Connection &connection, int x, int y) {
  if (const auto area = told_work_area(connection)) {
    x = std::clamp(x, area->left, std::max(area->left, area->right));
    y = std::clamp(y, area->top, std::max(area->top, area->bottom));
  }
  return {x, y, 1, 1};
}

bool is_full_screen_in_use(Connection &connection) {
  const auto active = connection.numbers(connection.root(), "_NET_ACTIVE_WINDOW");
  if (active.empty() || active[0] == XCB_WINDOW_NONE) {
    return false;
  }
  const auto states = connection.numbers(active[0], "_NET_WM_STATE");
  return std::find(states.begin(), states.end(), connection.atom("_NET_WM_STATE_FULLSCREEN")) !=
         states.end();
}

} // namespace td
