#include "standin.h"

#include "process_facts.h"
#include "signals.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include <poll.h>

namespace standin {
namespace {

constexpr int unusable_behaviour_status = 70;

std::string folder_of(const std::string &path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

/// Exits without destructors and without waiting for other threads, because a client that sends its
/// request slowly must not delay the exit. Printed output is flushed.
[[noreturn]] void exit_with(const Standin &standin, int status) {
  log_exit_status(standin.event_log, status);
  std::fflush(nullptr);
  std::_Exit(status);
}

/// Rounds up: a wait that ended just before `until` would be repeated with a timeout of 0.
int poll_timeout(Clock::time_point until) {
  if (until == Clock::time_point::max()) {
    return -1;
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
  return static_cast<int>(std::clamp<long long>(left, 0, INT_MAX));
}

/// Takes the signals that have arrived and logs them. True if the program is to stop.
bool take_stop_request(const Standin &standin) {
  while (const int signal = next_stop_signal(standin.stop_pipe)) {
    if (signal == SIGTERM && standin.behaviour.ignore_sigterm) {
      log_ignored_signal(standin.event_log, signal);
      continue;
    }
    log_stop_signal(standin.event_log, signal);
    return true;
  }
  return false;
}

Clock::time_point exit_deadline(const Standin &standin) {
  return standin.behaviour.exit_after ? standin.start + *standin.behaviour.exit_after
                                      : Clock::time_point::max();
}

} // namespace

Standin start_standin(Program program, int argc, char **argv) {
  const ProcessFacts facts = gather_process_facts(argc, argv);
  Standin standin;
  standin.program = program;
  standin.event_log.program = program;
  standin.start = Clock::now();
  standin.stop_pipe = catch_stop_signals();
  if (standin.stop_pipe < 0) {
    fail(standin, EXIT_FAILURE, std::string("cannot catch signals: ") + std::strerror(errno));
  }
  const ParsedBehaviour parsed = load_behaviour(folder_of(argc > 0 ? argv[0] : ""), program);
  if (!parsed.error.empty()) {
    fail(standin, unusable_behaviour_status, parsed.error);
  }
  standin.behaviour = parsed.behaviour;
  const std::optional<EventLog> event_log =
      open_event_log(program, parsed.behaviour.event_log_path);
  if (!event_log) {
    fail(standin, unusable_behaviour_status,
         parsed.behaviour.event_log_path + ": " + std::strerror(errno));
  }
  standin.event_log = *event_log;
  log_start(standin.event_log, facts);
  standin.status_line = make_status_line();
  if (standin.behaviour.exit_at_once) {
    end_standin(standin);
  }
  return standin;
}

WaitResult wait_for(const Standin &standin, int descriptor, Clock::time_point until) {
  for (;;) {
    const Clock::time_point first = std::min(until, exit_deadline(standin));
    std::array<pollfd, 2> watched{{{standin.stop_pipe, POLLIN, 0}, {descriptor, POLLIN, 0}}};
    const int ready = poll(watched.data(), watched.size(), poll_timeout(first));
    if (take_stop_request(standin) || Clock::now() >= exit_deadline(standin)) {
      return WaitResult::stop;
    }
    if (ready > 0 && watched[1].revents != 0) {
      return WaitResult::readable;
    }
    if (Clock::now() >= until) {
      return WaitResult::timeout;
    }
  }
}

void end_standin(Standin &standin) {
  finish_status_line(standin.status_line);
  if (standin.behaviour.signal) {
    log_exit_signal(standin.event_log, *standin.behaviour.signal);
    std::fflush(nullptr);
    die_by_signal(*standin.behaviour.signal);
    fail(standin, unusable_behaviour_status,
         "signal " + std::to_string(*standin.behaviour.signal) + " does not end a process");
  }
  exit_with(standin, standin.behaviour.status.value_or(EXIT_SUCCESS));
}

void fail(const Standin &standin, int status, const std::string &message) {
  std::fprintf(stderr, "%s: %s\n", program_name(standin.program), message.c_str());
  exit_with(standin, status);
}

void print_and_exit(const Standin &standin, const std::string &text) {
  std::fputs(text.c_str(), stdout);
  exit_with(standin, EXIT_SUCCESS);
}

std::string format_uptime(const Standin &standin) {
  const auto up = std::chrono::floor<std::chrono::seconds>(Clock::now() - standin.start);
  return format_duration(up.count());
}

} // namespace standin
