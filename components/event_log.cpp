#include "event_log.h"

#include "clock.h"
#include "json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace standin {
namespace {

/// Writes one event. `members` are its additional JSON members, each with a leading comma.
void append_event(const EventLog &log, std::string_view event, std::int64_t time_ns,
                  const std::string &members) {
  if (log.descriptor < 0) {
    return;
  }
  const std::string line = R"({"event":)" + json_string(event) + R"(,"program":)" +
                           json_string(program_name(log.program)) + R"(,"pid":)" +
                           std::to_string(getpid()) + R"(,"time_ns":)" + std::to_string(time_ns) +
                           members + "}\n";
  // A write error is ignored: there is no other place to report it.
  [[maybe_unused]] const ssize_t written = write(log.descriptor, line.data(), line.size());
}

std::string member(const char *name, const std::string &value) {
  return std::string(",\"") + name + "\":" + value;
}

} // namespace

std::optional<EventLog> open_event_log(Program program, const std::string &path) {
  if (path.empty()) {
    return EventLog{program, -1};
  }
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (descriptor < 0) {
    return std::nullopt;
  }
  return EventLog{program, descriptor};
}

void log_start(const EventLog &log, const ProcessFacts &facts) {
  std::string terminals;
  for (const bool terminal : facts.is_terminal) {
    terminals += terminals.empty() ? "" : ",";
    terminals += terminal ? "true" : "false";
  }
  append_event(
      log, "start", facts.time_ns,
      member("ppid", std::to_string(facts.ppid)) + member("pgid", std::to_string(facts.pgid)) +
          member("sid", std::to_string(facts.sid)) + member("argv", json_array(facts.argv)) +
          member("isatty", "[" + terminals + "]") +
          member("stdio", json_array(facts.standard_targets)) +
          member("descriptors", json_array(facts.other_descriptors)) +
          member("ignored", json_array(facts.ignored_signals)) +
          member("blocked", json_array(facts.blocked_signals)));
}

void log_stop_signal(const EventLog &log, int signal) {
  append_event(log, "stop", monotonic_ns(), member("signal", std::to_string(signal)));
}

void log_ignored_signal(const EventLog &log, int signal) {
  append_event(log, "ignored", monotonic_ns(), member("signal", std::to_string(signal)));
}

void log_exit_status(const EventLog &log, int status) {
  append_event(log, "exit", monotonic_ns(), member("status", std::to_string(status)));
}

void log_exit_signal(const EventLog &log, int signal) {
  append_event(log, "exit", monotonic_ns(), member("signal", std::to_string(signal)));
}

} // namespace standin
