#include "behaviour.h"

#include "number.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include <fcntl.h>
#include <unistd.h>

namespace standin {
namespace {

constexpr long max_wait_ms = 24L * 60 * 60 * 1000;

using Milliseconds = std::chrono::milliseconds;

/// One misbehaviour word.
struct Word {
  std::string_view name;
  bool hub_only;
  /// What the word sets. The type says which kind of value the word takes.
  std::variant<bool *, std::optional<int> *, std::optional<Milliseconds> *, std::string *> target;
  long minimum = 0; ///< for numbers
  long maximum = 0; ///< for numbers
  bool seen = false;
};

using Words = std::array<Word, 10>;

/// All words. They point into `behaviour`, which must outlive them.
Words make_words(Behaviour &behaviour) {
  return {{
      {"exit-at-once", false, &behaviour.exit_at_once},
      {"exit-after", false, &behaviour.exit_after, 0, max_wait_ms},
      {"status", false, &behaviour.status, 0, 255},
      {"signal", false, &behaviour.signal, 1, NSIG - 1},
      {"ignore-sigterm", false, &behaviour.ignore_sigterm},
      {"record", false, &behaviour.event_log_path},
      {"answer-after", true, &behaviour.answer_after, 0, max_wait_ms},
      {"slow-answer", true, &behaviour.slow_answer, 0, max_wait_ms},
      {"never-answer", true, &behaviour.never_answer},
      {"answer-404", true, &behaviour.answer_404},
  }};
}

/// The word with this name, or null if `program` does not support it.
Word *find_word(Words &words, std::string_view name, Program program) {
  for (Word &word : words) {
    if (word.name == name && (!word.hub_only || program == Program::hub)) {
      return &word;
    }
  }
  return nullptr;
}

/// Sets the word's target. `value` is empty if the word has no "=". Returns false if it is wrong.
bool fill_target(const Word &word, std::optional<std::string_view> value) {
  if (bool *const *flag = std::get_if<bool *>(&word.target)) {
    **flag = true;
    return !value;
  }
  if (std::string *const *text = std::get_if<std::string *>(&word.target)) {
    **text = value.value_or("");
    return !(*text)->empty();
  }
  const std::optional<long> number = parse_number(value.value_or(""), word.minimum, word.maximum);
  if (!number) {
    return false;
  }
  if (auto *const *time = std::get_if<std::optional<Milliseconds> *>(&word.target)) {
    **time = Milliseconds(*number);
  } else {
    *std::get<std::optional<int> *>(word.target) = static_cast<int>(*number);
  }
  return true;
}

/// Parses one word with its value. Returns an error message, or an empty string on success.
std::string parse_word(const std::string &token, Words &words, Program program) {
  const std::size_t equals = token.find('=');
  std::optional<std::string_view> value;
  if (equals != std::string::npos) {
    value = std::string_view(token).substr(equals + 1);
  }
  Word *word = find_word(words, std::string_view(token).substr(0, equals), program);
  if (word == nullptr) {
    return "no such misbehaviour: " + token;
  }
  if (std::exchange(word->seen, true)) {
    return "misbehaviour given twice: " + token;
  }
  return fill_target(*word, value) ? "" : "wrong value of a misbehaviour: " + token;
}

/// Returns an error message, or an empty string if no words contradict each other.
std::string find_conflict(const Behaviour &behaviour) {
  if (behaviour.status && behaviour.signal) {
    return "status and signal contradict each other";
  }
  if (behaviour.exit_at_once && behaviour.exit_after) {
    return "exit-at-once and exit-after contradict each other";
  }
  if (behaviour.never_answer && (behaviour.answer_404 || behaviour.slow_answer)) {
    return "never-answer contradicts answer-404 and slow-answer";
  }
  return "";
}

/// Appends the contents of the file to `text`. Returns 0 or an errno value.
int read_file(const std::string &path, std::string &text) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) {
    return errno;
  }
  std::array<char, 4096> chunk{};
  ssize_t size = 0;
  while ((size = read(descriptor, chunk.data(), chunk.size())) > 0) {
    text.append(chunk.data(), static_cast<std::size_t>(size));
  }
  const int error = size < 0 ? errno : 0;
  close(descriptor);
  return error;
}

std::string folder_file(const std::string &folder, const std::string &name) {
  return folder + "/" + name;
}

const char *variable_name(Program program) {
  switch (program) {
  case Program::hub:
    return "TD_STANDIN_HUB";
  case Program::receiver:
    return "TD_STANDIN_RECEIVER";
  case Program::sender:
    return "TD_STANDIN_SENDER";
  case Program::align:
    return "TD_STANDIN_ALIGN";
  }
  return "";
}

} // namespace

ParsedBehaviour parse_behaviour(std::string_view text, Program program) {
  ParsedBehaviour parsed;
  Words words = make_words(parsed.behaviour);
  std::istringstream stream{std::string(text)};
  for (std::string token; stream >> token;) {
    parsed.error = parse_word(token, words, program);
    if (!parsed.error.empty()) {
      return parsed;
    }
  }
  parsed.error = find_conflict(parsed.behaviour);
  return parsed;
}

ParsedBehaviour load_behaviour(const std::string &folder, Program program) {
  const std::string path = folder_file(folder, std::string(program_name(program)) + ".behaviour");
  std::string text;
  const int error = read_file(path, text);
  if (error != 0 && error != ENOENT && error != ENOTDIR) {
    return {{}, path + ": " + std::strerror(error)};
  }
  if (const char *variable = std::getenv(variable_name(program))) {
    text.append("\n").append(variable);
  }
  ParsedBehaviour parsed = parse_behaviour(text, program);
  std::string &event_log_path = parsed.behaviour.event_log_path;
  if (!event_log_path.empty() && event_log_path.front() != '/') {
    event_log_path = folder_file(folder, event_log_path);
  }
  return parsed;
}

} // namespace standin
