/// Named misbehaviours: what a test can ask a stand-in to do wrong. README.md lists the words.
#pragma once

#include "program.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace standin {

/// What a stand-in was told to do. Empty: it behaves well.
struct Behaviour {
  bool exit_at_once = false;                           ///< end before anything else
  std::optional<std::chrono::milliseconds> exit_after; ///< end this long after the start
  std::optional<int> status;                           ///< 0 to 255: what an orderly end returns
  std::optional<int> signal;                           ///< an orderly end is a death by this signal
  bool ignore_sigterm = false;                         ///< SIGTERM is recorded, not obeyed
  std::optional<std::chrono::milliseconds> answer_after; ///< hub: no dashboard port before this
  std::optional<std::chrono::milliseconds> slow_answer;  ///< hub: every answer takes this long
  bool never_answer = false;                             ///< hub: accepts, never replies
  bool answer_404 = false;                               ///< hub: every answer is 404
  std::string record;                                    ///< file for the events; empty: none
};

/// The outcome of reading misbehaviour words: `error` is empty or says which word is wrong, and
/// then `behaviour` means nothing.
struct ParsedBehaviour {
  Behaviour behaviour;
  std::string error;
};

/// Reads words separated by white space. An unknown word, a value out of range, a word that
/// `program` does not have, a repeated word and words that contradict each other are errors.
ParsedBehaviour parse_behaviour(std::string_view text, Program program);

/// Reads the words in the file "<folder>/<program>.behaviour" and in the program's variable
/// (TD_STANDIN_HUB and so on), both if both are there. A file that is there but cannot be read is
/// an error. A relative `record` file is returned as a path in `folder`.
ParsedBehaviour load_behaviour(const std::string &folder, Program program);

} // namespace standin
