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

/// A receiver or a sender and what it knows of its hub.
struct Client {
  Role role = Role::receiver;
  std::string hub; ///< as given, "host:port"
  sockaddr_storage address{};
  socklen_t address_size = 0;
  int socket = -1; ///< connected to the hub; -1: not yet, or the network was not there
  std::optional<Clock::time_point> registered; ///< since when; empty: not registered
  Clock::time_point acknowledged;              ///< the hub's last word, if registered
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

/// Fills the hub's address from "host:port". Returns what is wrong with it, or an empty text.
std::string find_hub(Client &client) {
  const std::size_t colon = client.hub.rfind(':');
  if (colon == std::string::npos || colon == 0 || !read_port(client.hub.substr(colon + 1))) {
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

/// A connected socket: only it hears that nobody listens at the hub's port.
int open_socket(const Client &client) {
  const int descriptor = socket(AF_INET, SOCK_DGRAM, 0);
  if (descriptor >= 0 && connect(descriptor, reinterpret_cast<const sockaddr *>(&client.address),
                                 client.address_size) != 0) {
    close(descriptor);
    return -1;
  }
  return descriptor;
}

/// A datagram that cannot be sent is no matter: the next one follows in a second.
void announce(Client &client, bool leaving) {
  if (client.socket < 0) {
    client.socket = open_socket(client);
  }
  if (client.socket >= 0) {
    const std::string text = announcement_text({client.role, getpid(), leaving});
    send(client.socket, text.data(), text.size(), MSG_DONTWAIT);
  }
}

/// Takes what came from the hub: its acknowledgement, or the news that nobody is there.
void take_answers(Client &client, Clock::time_point now) {
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
  draw(standin.status_line, text + "  up " + format_uptime(standin));
}

/// Registers once a second until the program is told to end.
void keep_registered(Standin &standin, Client &client) {
  Clock::time_point announce_at = Clock::now();
  Wake wake = Wake::time;
  while (wake != Wake::end) {
    const Clock::time_point now = Clock::now();
    if (now >= announce_at) {
      announce(client, false);
      announce_at = now + registration_period;
    }
    if (client.registered && now - client.acknowledged >= registration_lifetime) {
      client.registered.reset();
    }
    draw_status(standin, client, now);
    wake = wait_for(standin, client.socket, announce_at);
    if (wake == Wake::readable) {
      take_answers(client, Clock::now());
    }
  }
  announce(client, true);
}

} // namespace

void run_client(Role role, int argc, char **argv) {
  Standin standin = begin(role == Role::receiver ? Program::receiver : Program::sender, argc, argv);
  if (asks_for_help(argc, argv)) {
    print_and_end(standin, help(role));
  }
  Client client;
  client.role = role;
  std::string error = read_options(argc, argv, {{"--hub", &client.hub}});
  if (error.empty()) {
    error = find_hub(client);
  }
  if (!error.empty()) {
    fail(standin, 2, error + "\n" + usage(role));
  }
  keep_registered(standin, client);
  end(standin);
}

} // namespace standin
