/// Starting the hub and waiting until it answers on its dashboard port.
#pragma once

#include "child.h"

#include <atomic>
#include <cstdint>

/// Why the hub is started.
enum class StartReason {
  start_up,    ///< the first probe comes at once, and the end of the run ends the wait
  port_change, ///< the first probe comes after 100 ms, and the wait goes on when the run ends
};

/// How a start of the hub ended.
enum class HubStart {
  ready,       ///< the hub runs, and what answers is not known to be another program
  not_spawned, ///< no process was started; the record is unchanged
  not_ready,   ///< the hub exited (its record is idle then), was silent for 100 attempts, or the
               ///< run ended; it may still run
};

/// Starts the idle record `hub` and probes it until it answers on `http_port`, at most 100 times,
/// 100 ms apart; a probe of a silent port lasts up to 2 s. Prints nothing. After start-up the
/// caller holds the mutex of the list of components.
HubStart start_hub(Child &hub, std::uint16_t http_port, StartReason reason,
                   const std::atomic<bool> &running);

/// Asks the hub on this machine for its health once, for at most about 2 s. True: a complete HTTP
/// answer came, whatever its status code.
bool probe_hub(std::uint16_t http_port);
