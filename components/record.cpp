#include "record.h"

#include "json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace standin {
namespace {

/// `members` is what follows the members that every event has, each with a leading comma.
void append(const Record &record, std::string_view event, std::int64_t time_ns,
            const std::string &members) {
  if (record.descriptor < 0) {
    return;
  }
  const std::string line = R"({"event":)" + json_string(event) + R"(,"program":)" +
                           json_string(program_name(record.program)) + R"(,"pid":)" +
                           std::to_string(getpid()) + R"(,"time_ns":)" + std::to_string(time_ns) +
                           members + "}\n";
  // A record that cannot be written has no place to say so; the reader misses the event.
  [[maybe_unused]] const ssize_t written = write(record.descriptor, line.data(), line.size());
}

std::string member(const char *name, const std::string &value) {
  return std::string(",\"") + name + "\":" + value;
}

} // namespace

std::optional<Record> open_record(Program program, const std::string &path) {
  if (path.empty()) {
    return Record{program, -1};
  }
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (descriptor < 0) {
    return std::nullopt;
  }
  return Record{program, descriptor};
}

void record_start(const Record &record, const ProcessFacts &facts) {
  std::string terminals;
  for (const bool terminal : facts.is_terminal) {
    terminals += terminals.empty() ? "" : ",";
    terminals += terminal ? "true" : "false";
  }
  append(record, "start", facts.time_ns,
         member("ppid", std::to_string(facts.ppid)) + member("pgid", std::to_string(facts.pgid)) +
             member("sid", std::to_string(facts.sid)) + member("argv", json_array(facts.argv)) +
             member("isatty", "[" + terminals + "]") +
             member("stdio", json_array(facts.standard_targets)) +
             member("descriptors", json_array(facts.other_descriptors)) +
             member("ignored", json_array(facts.ignored_signals)) +
             member("blocked", json_array(facts.blocked_signals)));
}

void record_stop(const Record &record, int signal) {
  append(record, "stop", monotonic_ns(), member("signal", std::to_string(signal)));
}

void record_ignored(const Record &record, int signal) {
  append(record, "ignored", monotonic_ns(), member("signal", std::to_string(signal)));
}

void record_exit_status(const Record &record, int status) {
  append(record, "exit", monotonic_ns(), member("status", std::to_string(status)));
}

void record_exit_signal(const Record &record, int signal) {
  append(record, "exit", monotonic_ns(), member("signal", std::to_string(signal)));
}

} // namespace standin
