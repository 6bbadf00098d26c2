#include "fuzzer.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <unistd.h>

namespace {

std::string replay; // the command
std::string_view current_input;

} // namespace

std::string printable(std::string_view bytes) {
  std::string result;
  for (const char c : bytes) {
    if (c == '"' || c == '\\') {
      result += {'\\', c};
    } else if (c >= ' ' && c <= '~') {
      result += c;
    } else { // three digits, so that a digit may follow
      std::array<char, 5> octal{};
      (void)std::snprintf(octal.data(), octal.size(), "\\%03o",
                          static_cast<unsigned>(static_cast<unsigned char>(c)));
      result += octal.data();
    }
  }
  return result;
}

void broken(std::string_view rule, const std::string &expected, const std::string &got) {
  // Not through stderr: a fuzzer may have replaced it.
  dprintf(STDERR_FILENO,
          "\nBroken rule: %s\n  input:    \"%s\"\n  expected: %s\n  found:    %s\n"
          "  to run this input again: %s\n\n",
          std::string(rule).c_str(), printable(current_input).c_str(), expected.c_str(),
          got.c_str(), replay.c_str());
  std::abort();
}

// libFuzzer chooses the names of both. NOLINTBEGIN(readability-identifier-naming)

/// Puts the options that every run needs before those that were given, which therefore win.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
  const std::string program = (*argv)[0];
  const std::string failed = program + ".failed";
  replay = program + " " + failed;
  dprintf(STDERR_FILENO, "After a failure of any kind, run its input again with: %s\n",
          replay.c_str());
  static std::vector<std::string> words = {"-exact_artifact_path=" + failed};
  for (const char *word :
       {"-dict=" DICTIONARY, "-max_len=256", "-timeout=10", "-print_final_stats=1"}) {
    words.emplace_back(word);
  }
  static std::vector<char *> arguments(*argv, *argv + *argc);
  auto place = arguments.begin() + 1;
  for (std::string &word : words) {
    place = arguments.insert(place, word.data()) + 1;
  }
  *argc = static_cast<int>(arguments.size());
  arguments.push_back(nullptr);
  *argv = arguments.data();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  current_input = {reinterpret_cast<const char *>(data), size};
  check(current_input);
  return 0;
}

// NOLINTEND(readability-identifier-naming)
