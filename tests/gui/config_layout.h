/// Checks the order of GuiConfig's fields: the launcher and the interface are built separately and
/// must agree on it.
#pragma once

#include "tdgui.h"

#include <cstddef>

namespace gui_test {

using tdgui::Component;
using tdgui::GuiConfig;

template <std::size_t count> constexpr bool ascending(const std::size_t (&offsets)[count]) {
  for (std::size_t i = 1; i < count; ++i) {
    if (offsets[i - 1] >= offsets[i]) {
      return false;
    }
  }
  return true;
}

static_assert(ascending({offsetof(Component, name), offsetof(Component, label)}));
static_assert(ascending({offsetof(GuiConfig, url), offsetof(GuiConfig, status),
                         offsetof(GuiConfig, components), offsetof(GuiConfig, is_running),
                         offsetof(GuiConfig, start), offsetof(GuiConfig, stop),
                         offsetof(GuiConfig, restart), offsetof(GuiConfig, quit),
                         offsetof(GuiConfig, set_ports), offsetof(GuiConfig, http_port),
                         offsetof(GuiConfig, udp_port), offsetof(GuiConfig, open_browser_pref),
                         offsetof(GuiConfig, set_open_browser_pref),
                         offsetof(GuiConfig, quit_fallback)}));

} // namespace gui_test
