/// A stand-in for the suite's hub. It shows the registered clients on a dashboard.
#include "arguments.h"
#include "dashboard.h"
#include "standin.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace standin;

constexpr const char *usage = "Usage: td_hub --udp-port N --http-port N\n";
constexpr const char *description =
    "\n"
    "A stand-in for the suite's hub. It lists the receivers and senders that register with it and\n"
    "shows them on a dashboard page. It handles no audio.\n"
    "\n"
    "  --udp-port N   control port: where receivers and senders register\n"
    "  --http-port N  dashboard port: http://127.0.0.1:N/\n"
    "  --help         print this text\n"
    "\n"
    "Ports are 1 to 65535, or 0 for a free one that the system chooses and the status line "
    "names.\n";

/// Opens and binds the control socket. If `port` is 0, sets it to the port that the system has
/// chosen. Returns -1 with errno set on failure. Does not set SO_REUSEADDR, so that two hubs cannot
/// share a port.
int open_control_port(int &port) {
  const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  socklen_t size = sizeof address;
  if (descriptor < 0 || bind(descriptor, reinterpret_cast<const sockaddr *>(&address), size) != 0 ||
      getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &size) != 0) {
    return -1;
  }
  port = ntohs(address.sin_port);
  return descriptor;
}

std::string format_address(const sockaddr_in &address) {
  std::array<char, INET_ADDRSTRLEN> host{};
  inet_ntop(AF_INET, &address.sin_addr, host.data(), host.size());
  return std::string(host.data()) + ":" + std::to_string(ntohs(address.sin_port));
}

/// Receives the datagrams that are waiting, but at most 64, so that a flood of datagrams cannot
/// delay the reaction to a signal.
void receive_announcements(int control, Registry &registry) {
  for (int received = 0; received < 64; ++received) {
    std::array<char, 256> datagram{};
    sockaddr_in from{};
    socklen_t from_size = sizeof from;
    const ssize_t size = recvfrom(control, datagram.data(), datagram.size(), MSG_DONTWAIT,
                                  reinterpret_cast<sockaddr *>(&from), &from_size);
    if (size < 0) {
      return;
    }
    const auto announcement = parse_announcement({datagram.data(), static_cast<std::size_t>(size)});
    if (announcement &&
        apply_announcement(registry, *announcement, format_address(from), Clock::now()) &&
        !announcement->leaving) {
      sendto(control, acknowledgement.data(), acknowledgement.size(), MSG_DONTWAIT,
             reinterpret_cast<const sockaddr *>(&from), from_size);
    }
  }
}

[[noreturn]] void fail_to_listen(const Standin &standin, const char *kind, int port, int error) {
  fail(standin, EXIT_FAILURE,
       std::string("cannot listen on ") + kind + " port " + std::to_string(port) + ": " +
           std::strerror(error));
}

void open_dashboard(Standin &standin, HubState &state) {
  const int error = start_dashboard(state, standin.behaviour, [&standin] {
    fail(standin, EXIT_FAILURE, "the dashboard's server has ended");
  });
  if (error != 0) {
    finish_status_line(standin.status_line);
    fail_to_listen(standin, "dashboard", state.http_port, error);
  }
}

std::string status_text(const Standin &standin, const HubState &state) {
  const std::size_t registered = list_registered(state.registry, Clock::now()).size();
  return "td_hub (stand-in)  http://127.0.0.1:" + std::to_string(state.http_port) + "/  udp " +
         std::to_string(state.udp_port) + "  " + std::to_string(registered) + " registered  up " +
         format_uptime(standin);
}

/// The main loop. Returns when the program is to stop.
void serve(Standin &standin, int control, HubState &state) {
  const Clock::time_point never = Clock::time_point::max();
  Clock::time_point dashboard_at =
      standin.start + standin.behaviour.answer_after.value_or(std::chrono::milliseconds(0));
  Clock::time_point draw_at = standin.status_line.on_terminal ? Clock::now() : never;
  WaitResult result = WaitResult::timeout;
  while (result != WaitResult::stop) {
    const Clock::time_point now = Clock::now();
    if (now >= dashboard_at) {
      open_dashboard(standin, state);
      dashboard_at = never;
    }
    if (now >= draw_at) {
      draw_status_line(standin.status_line, status_text(standin, state));
      draw_at = now + std::chrono::seconds(1);
    }
    result = wait_for(standin, control, std::min(dashboard_at, draw_at));
    if (result == WaitResult::readable) {
      receive_announcements(control, state.registry);
    }
  }
}

} // namespace

int main(int argc, char **argv) {
  Standin standin = start_standin(Program::hub, argc, argv);
  if (has_help_option(argc, argv)) {
    print_and_exit(standin, std::string(usage) + description);
  }
  std::string udp_port;
  std::string http_port;
  std::string error =
      parse_options(argc, argv, {{"--udp-port", &udp_port}, {"--http-port", &http_port}});
  const std::optional<int> udp = parse_port(udp_port, 0);
  const std::optional<int> http = parse_port(http_port, 0);
  if (error.empty() && (!udp || !http)) {
    error = "not a port: " + (udp ? http_port : udp_port);
  }
  if (!error.empty() || !udp || !http) {
    fail(standin, 2, error + "\n" + usage);
  }
  HubState state;
  state.udp_port = *udp;
  state.http_port = *http;
  state.start = standin.start;
  const int control = open_control_port(state.udp_port);
  if (control < 0) {
    fail_to_listen(standin, "control", state.udp_port, errno);
  }
  serve(standin, control, state);
  end_standin(standin);
}
