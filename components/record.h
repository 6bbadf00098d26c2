/// The record of a stand-in's life: one JSON object per line, one write per event, so that several
/// programs can share a file. README.md describes the events.
#pragma once

#include "process_facts.h"
#include "program.h"

#include <cstdint>
#include <optional>
#include <string>

namespace standin {

/// Where the events of this process go.
struct Record {
  Program program = Program::hub;
  int descriptor = -1; ///< open for appending, or -1: nothing is recorded
};

/// Opens `path` for appending, creating it; an empty path gives a record that drops every event.
/// Empty on failure, with errno set.
std::optional<Record> open_record(Program program, const std::string &path);

/// The state in which the process was started.
void record_start(const Record &record, const ProcessFacts &facts);

/// `signal` asked for an orderly end.
void record_stop(const Record &record, int signal);

/// `signal` asked for an orderly end and was told no.
void record_ignored(const Record &record, int signal);

/// The process ends with exit status `status`.
void record_exit_status(const Record &record, int status);

/// The process ends by `signal`.
void record_exit_signal(const Record &record, int signal);

} // namespace standin
