/// Misbehaviours: what a test can make a stand-in do wrong. README.md lists their words.
#pragma once

#include "program.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace standin {

/// The misbehaviours of one stand-in. By default it has none.
struct Behaviour {
  bool exit_at_once = false;                             ///< exit before doing anything else
  std::optional<std::chrono::milliseconds> exit_after;   ///< exit this long after the start
  std::optional<int> status;                             ///< status of a normal exit, 0 to 255
  std::optional<int> signal;                             ///< die by this signal at a normal exit
  bool ignore_sigterm = false;                           ///< log SIGTERM, but do not stop
  std::optional<std::chrono::milliseconds> answer_after; ///< hub: open the dashboard port later
  std::optional<std::chrono::milliseconds> slow_answer;  ///< hub: delay every response
  bool never_answer = false;                             ///< hub: accept, but never respond
  bool answer_404 = false;                               ///< hub: respond to everything with 404
  std::string event_log_path;                            ///< file of the event log; empty: none
};

/// The result of parsing misbehaviour words.
struct ParsedBehaviour {
  Behaviour behaviour; ///< valid only if `error` is empty
  std::string error;   ///< empty, or a message that names the wrong word
};

/// Parses words separated by white space. Errors are: an unknown word, a value out of range, a word
/// that `program` does not support, a word given twice, and words that contradict each other.
ParsedBehaviour parse_behaviour(std::string_view text, Program program);

/// Parses the words in the file "<folder>/<program>.behaviour" and in the program's environment
/// variable (such as TD_STANDIN_HUB) together. Either may be missing. A file that exists but cannot
/// be read is an error. A relative event log path is made relative to `folder`.
ParsedBehaviour load_behaviour(const std::string &folder, Program program);

} // namespace standin
