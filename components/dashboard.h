/// The hub's web server: the dashboard page and two JSON resources.
#pragma once

#include "behaviour.h"
#include "clock.h"
#include "registry.h"

#include <functional>
#include <string_view>

namespace standin {

/// What the dashboard shows. Only the registry changes once the server runs.
struct HubState {
  int udp_port = 0;
  int http_port = 0;
  Clock::time_point start;
  Registry registry; ///< safe to use from any thread
};

/// The page at "/", a static string. The build generates this function from dashboard.html.
std::string_view dashboard_page();

/// Listens on `state.http_port` on every interface and serves the dashboard in background threads
/// until the process ends. If the port is 0, sets it to a free one that the system chooses. Returns
/// 0, or an errno value if it cannot listen. `state` must live as long as the process. `on_failure`
/// is called from a background thread if the server stops.
int start_dashboard(HubState &state, const Behaviour &behaviour, std::function<void()> on_failure);

} // namespace standin
