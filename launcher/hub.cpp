#include "hub.h"

#include "listening.h"
#include "pause.h"
#include "tools.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace {

constexpr int probe_attempts = 100;
constexpr std::chrono::milliseconds probe_interval{100};

enum class ProbeOutcome { ready, silent, exited };

/// Probes and polls the hub once.
ProbeOutcome check_hub(Child &hub, std::uint16_t http_port) {
  // The hub of another copy may have the port and answer; the one started here then ends by itself.
  const bool answered = probe_hub(http_port) && !only_others_listen(hub.pid, http_port);
  // Polled last, because the checks above cannot tell whether a hub has ended or cannot be
  // examined.
  if (reap(hub)) {
    return ProbeOutcome::exited;
  }
  return answered ? ProbeOutcome::ready : ProbeOutcome::silent;
}

} // namespace

HubStart start_hub(Child &hub, std::uint16_t http_port, StartReason reason,
                   const std::atomic<bool> &running) {
  if (!spawn(hub)) {
    return HubStart::not_spawned;
  }
  for (int attempt = 0; attempt < probe_attempts; ++attempt) {
    if (attempt > 0 || reason == StartReason::port_change) {
      pause_for(probe_interval);
    }
    if (reason == StartReason::start_up && !running) {
      break;
    }
    const ProbeOutcome outcome = check_hub(hub, http_port);
    if (outcome != ProbeOutcome::silent) {
      return outcome == ProbeOutcome::ready ? HubStart::ready : HubStart::not_ready;
    }
  }
  return HubStart::not_ready;
}

bool probe_hub(std::uint16_t http_port) {
  std::array<char, 256> command{};
  std::snprintf(command.data(), command.size(),
                "curl -s -m 2 -o /dev/null http://127.0.0.1:%u/api/health",
                static_cast<unsigned>(http_port));
  // A proxy from the environment or from curl's own settings must not be asked about this machine.
  return run_tool(command.data(), {"no_proxy=127.0.0.1"});
}
