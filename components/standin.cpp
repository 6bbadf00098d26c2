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

/// Destructors and other threads are left behind on purpose: a client that is slow to send its
/// request must not delay the end. What was printed is not lost.
[[noreturn]] void exit_with(const Standin &standin, int status) {
  record_exit_status(standin.record, status);
  std::fflush(nullptr);
  std::_Exit(status);
}

/// The rounding up keeps a wait from ending just before its time and spinning.
int poll_timeout(Clock::time_point until) {
  if (until == Clock::time_point::max()) {
    return -1;
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
  return static_cast<int>(std::clamp<long long>(left, 0, INT_MAX));
}

/// Whether a stop signal came that is to be obeyed.
bool told_to_stop(const Standin &standin) {
  while (const int signal = next_stop_signal(standin.stop_pipe)) {
    if (signal == SIGTERM && standin.behaviour.ignore_sigterm) {
      record_ignored(standin.record, signal);
      continue;
    }
    record_stop(standin.record, signal);
    return true;
  }
  return false;
}

Clock::time_point own_end(const Standin &standin) {
  return standin.behaviour.exit_after ? standin.start + *standin.behaviour.exit_after
                                      : Clock::time_point::max();
}

} // namespace

Standin begin(Program program, int argc, char **argv) {
  const ProcessFacts facts = gather_process_facts(argc, argv);
  Standin standin;
  standin.program = program;
  standin.record.program = program;
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
  const std::optional<Record> record = open_record(program, parsed.behaviour.record);
  if (!record) {
    fail(standin, unusable_behaviour_status, parsed.behaviour.record + ": " + std::strerror(errno));
  }
  standin.record = *record;
  record_start(standin.record, facts);
  standin.status_line = make_status_line();
  if (standin.behaviour.exit_at_once) {
    end(standin);
  }
  return standin;
}

Wake wait_for(const Standin &standin, int descriptor, Clock::time_point until) {
  for (;;) {
    const Clock::time_point first = std::min(until, own_end(standin));
    std::array<pollfd, 2> watched{{{standin.stop_pipe, POLLIN, 0}, {descriptor, POLLIN, 0}}};
    const int ready = poll(watched.data(), watched.size(), poll_timeout(first));
    if (told_to_stop(standin) || Clock::now() >= own_end(standin)) {
      return Wake::end;
    }
    if (ready > 0 && watched[1].revents != 0) {
      return Wake::readable;
    }
    if (Clock::now() >= until) {
      return Wake::time;
    }
  }
}

void end(Standin &standin) {
  leave(standin.status_line);
  if (standin.behaviour.signal) {
    record_exit_signal(standin.record, *standin.behaviour.signal);
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

void print_and_end(const Standin &standin, const std::string &text) {
  std::fputs(text.c_str(), stdout);
  exit_with(standin, EXIT_SUCCESS);
}

std::string format_uptime(const Standin &standin) {
  const auto up = std::chrono::floor<std::chrono::seconds>(Clock::now() - standin.start);
  return format_duration(up.count());
}

} // namespace standin
