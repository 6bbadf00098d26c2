#include "hub.h"

#include "pause.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int connect_limit_ms = 100;
constexpr int probe_attempts = 100;
constexpr int polls_of_doubtful_hub = 10;
constexpr std::chrono::milliseconds probe_interval{100};

enum class HubState { ready, silent, exited };

/// How the socket's connection attempt ended: 0 or an errno value.
int socket_error(int socket) {
  int error = 0;
  socklen_t size = sizeof error;
  getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size);
  return error;
}

sockaddr_in loopback_address(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

/// Whether a non-blocking socket finds a listener at `address`, on this machine.
bool connects(int socket, const sockaddr_in &address) {
  if (connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0) {
    return true;
  }
  if (errno != EINPROGRESS) {
    return false;
  }
  // On this machine the answer is there at once. None within the limit means that somebody listens
  // but is too busy to accept.
  pollfd ready{socket, POLLOUT, 0};
  return poll(&ready, 1, connect_limit_ms) != 1 || socket_error(socket) == 0;
}

/// Polls the hub so many times, 100 ms apart, and once more; false as soon as it has exited.
bool still_running_after(Child &hub, int polls) {
  for (int poll = 0; poll < polls; ++poll) {
    if (reap(hub)) {
      return false;
    }
    pause_for(probe_interval);
  }
  return !reap(hub);
}

/// Probes and polls the hub once. What answers is our hub only if our hub runs. Where the port was
/// taken before it started, another copy answers, and ours may take some time to fail.
HubState check_hub(Child &hub, std::uint16_t http_port, bool port_was_taken,
                   std::atomic<bool> &running) {
  const ToolResult probe = probe_hub(http_port);
  end_run_if_interrupted(probe, running);
  const bool answered = probe == ToolResult::success;
  if (!still_running_after(hub, answered && port_was_taken ? polls_of_doubtful_hub : 0)) {
    return HubState::exited;
  }
  return answered ? HubState::ready : HubState::silent;
}

} // namespace

HubStart start_hub(Child &hub, std::uint16_t http_port, StartReason reason,
                   std::atomic<bool> &running) {
  const bool port_was_taken = answers_on_loopback(http_port);
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
    const HubState state = check_hub(hub, http_port, port_was_taken, running);
    if (state != HubState::silent) {
      return state == HubState::ready ? HubStart::ready : HubStart::not_ready;
    }
  }
  return HubStart::not_ready;
}

ToolResult probe_hub(std::uint16_t http_port) {
  std::array<char, 256> command{};
  std::snprintf(command.data(), command.size(),
                "curl -s -m 2 -o /dev/null http://127.0.0.1:%u/api/health",
                static_cast<unsigned>(http_port));
  return run_tool(command.data());
}

bool answers_on_loopback(std::uint16_t port) {
  const int connection = socket(AF_INET, SOCK_STREAM, 0);
  if (connection < 0) {
    return false;
  }
  fcntl(connection, F_SETFL, O_NONBLOCK);
  const bool answers = connects(connection, loopback_address(port));
  close(connection);
  return answers;
}
