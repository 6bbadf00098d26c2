/// The event log: one JSON object per line and one write per event, so that several programs can
/// append to the same file. README.md lists the events.
#pragma once

#include "process_facts.h"
#include "program.h"

#include <optional>
#include <string>

namespace standin {

/// Where this process logs its events.
struct EventLog {
  Program program = Program::hub;
  int descriptor = -1; ///< open for appending until the process ends; -1: events are dropped
};

/// Opens the file `path` for appending and creates it if needed. If `path` is empty, the log drops
/// every event. Returns nothing on failure, with errno set.
std::optional<EventLog> open_event_log(Program program, const std::string &path);

/// Logs "start": how the process was started.
void log_start(const EventLog &log, const ProcessFacts &facts);

/// Logs "stop": the process will stop because of `signal`.
void log_stop_signal(const EventLog &log, int signal);

/// Logs "ignored": the process will not stop, although it has received `signal`.
void log_ignored_signal(const EventLog &log, int signal);

/// Logs "exit" with a status. Call it just before the process exits with it.
void log_exit_status(const EventLog &log, int status);

/// Logs "exit" with a signal. Call it just before the process dies by it.
void log_exit_signal(const EventLog &log, int signal);

} // namespace standin
