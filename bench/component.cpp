// Stands for a component of the suite and does as little as possible, so that what is measured is
// the launcher. It is the component whose name it is started by. Each tells its start ("start"),
// the hub also each probe ("refused", "answered"); SIGTERM ends it.
//
// The hub listens at once. Until so many milliseconds after its start as TD_BENCH_READY_MS says it
// closes each connection without an answer.

#include "moments.h"

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/socket.h>

namespace {

constexpr timespec closing_time{0, 5'000'000};
constexpr std::string_view answer = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

/// A descriptor that becomes readable at the first SIGTERM or SIGINT.
int ending_signals() {
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGTERM);
  sigaddset(&ending, SIGINT);
  sigprocmask(SIG_BLOCK, &ending, nullptr);
  return signalfd(-1, &ending, SFD_CLOEXEC);
}

/// The value of "--http-port"; 0 when it is missing.
int http_port(int argc, char **argv) {
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::strcmp(argv[i], "--http-port") == 0) {
      return std::atoi(argv[i + 1]);
    }
  }
  return 0;
}

/// -1 when the port cannot be had.
int listen_on(int port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int on = 1;
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool bound =
      listener >= 0 &&
      bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
      listen(listener, SOMAXCONN) == 0;
  return bound ? listener : -1;
}

void serve(int listener, bool is_ready) {
  const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
  if (connection < 0) {
    return;
  }
  tell("td_hub", is_ready ? "answered" : "refused");
  if (is_ready) {
    std::array<char, 4096> request{};
    if (read(connection, request.data(), request.size()) > 0 &&
        write(connection, answer.data(), answer.size()) < 0) {
      std::perror("answer");
    }
  }
  close(connection);
}

/// Until a signal ends it; `listener` is -1 in a component that serves nothing.
void run(int listener, long long ready) {
  std::array<pollfd, 2> awaited{{{ending_signals(), POLLIN, 0}, {listener, POLLIN, 0}}};
  while (poll(awaited.data(), awaited.size(), -1) < 0 || awaited[0].revents == 0) {
    if (awaited[1].revents != 0) {
      serve(listener, nanoseconds() >= ready);
    }
  }
}

} // namespace

int main(int argc, char **argv) {
  const long long started = nanoseconds();
  const char *slash = std::strrchr(argv[0], '/');
  const std::string name = slash == nullptr ? argv[0] : slash + 1;
  tell(name, "start");
  const char *delay = std::getenv("TD_BENCH_READY_MS");
  const long long ready = started + (delay == nullptr ? 0 : std::atoll(delay)) * 1'000'000;
  const int listener = name == "td_hub" ? listen_on(http_port(argc, argv)) : -1;
  if (name == "td_hub" && listener < 0) {
    std::perror("the hub's port");
    return 1;
  }
  run(listener, ready);
  nanosleep(&closing_time, nullptr);
  return 0;
}
