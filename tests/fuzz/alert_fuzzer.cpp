/// The input is the message, up to its first NUL. The shell that would show it is never started:
/// spawn() and wait_for_exit() are defined here, in place of the launcher's.
#include "alert_words.h"
#include "child.h"
#include "fuzzer.h"
#include "osascript.h"
#include "platform.h"
#include "tools.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace {

std::vector<std::vector<std::string>> started; // each process's path and arguments

/// Calls fatal_dialog() and returns what it wrote to standard error.
std::string dialog(const std::string &message) {
  static std::array<char, 2048> written;
  static std::FILE *const memory = fmemopen(written.data(), written.size(), "w");
  std::rewind(memory);
  std::FILE *const terminal = stderr;
  stderr = memory;
  fatal_dialog(message);
  stderr = terminal;
  (void)std::fflush(memory);
  return {written.data(), static_cast<std::size_t>(std::ftell(memory))};
}

/// The command of a Mac, for any message.
void check_osascript(const std::string &message) {
  const std::string_view start = R"(osascript -e 'display alert "Tandrel" message ")";
  const std::string_view end = "\" as critical' >/dev/null 2>&1";
  const std::string made = osascript_command(message);
  const std::string_view command = made;
  expect_equal("osascript's command begins so.", start, command.substr(0, start.size()));
  const std::string_view rest = command.substr(start.size());
  const std::size_t length = rest.size() - std::min(rest.size(), end.size());
  expect_equal("osascript's command ends so.", end, rest.substr(length));
  expect_equal<std::string_view>("The string of the script is the message.", message,
                                 script_text(rest.substr(0, length)));
}

} // namespace

bool spawn(Child &child, SpawnMode /*mode*/) {
  started.push_back(child.args);
  started.back().insert(started.back().begin(), child.path);
  return true;
}

std::optional<int> wait_for_exit(Child & /*child*/) {
  return 0;
}

void check(std::string_view input) {
  static const auto reference = shell_words(platform::alert_command(reference_message));
  const std::string message(input.substr(0, input.find('\0')));
  check_osascript(message);
  started.clear();
  expect_equal("The terminal gets the message as it is, and a line feed.", message + "\n",
               dialog(message));
  if (message.find('\'') != std::string::npos) {
    expect_equal("Nothing is run for a message with a single quote.", 0,
                 static_cast<int>(started.size()));
    return;
  }
  expect_equal("One shell is run.", 1, static_cast<int>(started.size()));
  const std::vector<std::string> &shell = started[0];
  expect_equal("A shell is run with one command.", 3, static_cast<int>(shell.size()));
  expect_equal<std::string_view>("A shell is run with one command.", "/bin/sh -c",
                                 shell[0] + " " + shell[1]);
  check_words(shell_words(shell[2]), reference, message);
}
