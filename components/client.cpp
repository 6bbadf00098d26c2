#include "client.h"

#include "arguments.h"
#include "standin.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include <netdb.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <unistd.h>

namespace standin {
namespace {

/// A receiver or a sender, and its connection to the hub.
struct Client {
  Role role = Role::receiver;
  std::string hub; ///< as given, "host:port"
  sockaddr_storage address{};
  socklen_t address_size = 0;
  int socket = -1;                             ///< connected to the hub; -1: not open
  std::optional<Clock::time_point> registered; ///< start of the registration; empty: none
  Clock::time_point acknowledged;              ///< time of the last acknowledgement
};

std::string usage(Role role) {
  return std::string("Usage: td_") + role_name(role) + " --hub HOST:PORT\n";
}

std::string help(Role role) {
  const std::string name = role_name(role);
  return usage(role) + "\nA stand-in for the suite's " + name +
         ". It registers with the hub once a second and shows whether the\n"
         "hub knows it. It handles no audio.\n"
         "\n"
         "  --hub HOST:PORT  the hub's address and control port\n"
         "  --help           print this text\n";
}

/// Resolves "host:port" to the hub's address. Returns an error message, or an empty string.
std::string resolve_hub(Client &client) {
  const std::size_t colon = client.hub.rfind(':');
  if (colon == std::string::npos || colon == 0 || !parse_port(client.hub.substr(colon + 1), 1)) {
    return "not HOST:PORT: " + client.hub;
  }
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_DGRAM;
  addrinfo *found = nullptr;
  const int error = getaddrinfo(client.hub.substr(0, colon).c_str(),
                                client.hub.substr(colon + 1).c_str(), &hints, &found);
  if (error != 0) {
    return client.hub + ": " + gai_strerror(error);
  }
  client.address_size = found->ai_addrlen;
  std::memcpy(&client.address, found->ai_addr, found->ai_addrlen);
  freeaddrinfo(found);
  return "";
}

/// Opens a UDP socket. It is connected: only then recv() reports that no hub listens on the port.
/// Returns -1 on failure.
int open_socket(const Client &client) {
  const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
  if (descriptor >= 0 && connect(descriptor, reinterpret_cast<const sockaddr *>(&client.address),
                                 client.address_size) != 0) {
    close(descriptor);
    return -1;
  }
  return descriptor;
}

/// Errors are ignored: the next announcement follows in a second.
void send_announcement(Client &client, bool leaving) {
  if (client.socket < 0) {
    client.socket = open_socket(client);
  }
  if (client.socket >= 0) {
    const std::string text = announcement_text({client.role, getpid(), leaving});
    send(client.socket, text.data(), text.size(), MSG_DONTWAIT);
  }
}

/// Receives one acknowledgement, or the error that no hub listens on the port.
void receive_acknowledgement(Client &client, Clock::time_point now) {
  std::array<char, 256> datagram{};
  const ssize_t size = recv(client.socket, datagram.data(), datagram.size(), MSG_DONTWAIT);
  if (size < 0) {
    client.registered.reset();
  } else if (std::string_view(datagram.data(), static_cast<std::size_t>(size)) == acknowledgement) {
    client.registered = client.registered.value_or(now);
    client.acknowledged = now;
  }
}

void draw_status(Standin &standin, const Client &client, Clock::time_point now) {
  std::string text = std::string(program_name(standin.program)) + " (stand-in)  ";
  if (client.registered) {
    const auto since = std::chrono::floor<std::chrono::seconds>(now - *client.registered);
    text += "registered with " + client.hub + " for " + format_duration(since.count());
  } else {
    text += "looking for the hub at " + client.hub;
  }
  draw_status_line(standin.status_line, text + "  up " + format_uptime(standin));
}

/// Announces the client once a second until the program is to stop.
void keep_registered(Standin &standin, Client &client) {
  Clock::time_point announce_at = Clock::now();
  WaitResult result = WaitResult::timeout;
  while (result != WaitResult::stop) {
    const Clock::time_point now = Clock::now();
    if (now >= announce_at) {
      send_announcement(client, false);
      announce_at = now + registration_period;
    }
    if (client.registered && now - client.acknowledged >= registration_lifetime) {
      client.registered.reset();
    }
    draw_status(standin, client, now);
    result = wait_for(standin, client.socket, announce_at);
    if (result == WaitResult::readable) {
      receive_acknowledgement(client, Clock::now());
    }
  }
  send_announcement(client, true);
}

} // namespace

void run_client(Role role, int argc, char **argv) {
  Standin standin =
      start_standin(role == Role::receiver ? Program::receiver : Program::sender, argc, argv);
  if (has_help_option(argc, argv)) {
    print_and_exit(standin, help(role));
  }
  Client client;
  client.role = role;
  std::string error = parse_options(argc, argv, {{"--hub", &client.hub}});
  if (error.empty()) {
    error = resolve_hub(client);
  }
  if (!error.empty()) {
    fail(standin, 2, error + "\n" + usage(role));
  }
  keep_registered(standin, client);
  end_standin(standin);
}

} // namespace standin
