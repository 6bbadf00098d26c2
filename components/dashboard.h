/// The hub's web server: the dashboard page and the two JSON answers.
#pragma once

#include "behaviour.h"
#include "registry.h"

#include <chrono>
#include <functional>
#include <string_view>

namespace standin {

/// What the dashboard shows. The ports and times are constant; the registry does its own locking.
struct HubState {
  int udp_port = 0;
  int http_port = 0;
  std::chrono::steady_clock::time_point start;
  Registry registry;
};

/// The page at "/". Lives as long as the program. Generated from dashboard.html.
std::string_view dashboard_page();

/// Listens on the dashboard port of `state` on every interface and serves it in threads of its own
/// until the process ends. Returns 0, or the errno of a port that cannot be had. `state` must live
/// as long as the process. `on_failure` is called, from another thread, if serving ends.
int start_dashboard(const HubState &state, const Behaviour &behaviour,
                    std::function<void()> on_failure);

} // namespace standin
