/// The input is the message, up to its first NUL. A real shell runs the alert's command for each of
/// the four tools, as functions that print their arguments.
#include "alert_words.h"
#include "fuzzer.h"
#include "platform.h"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int output = 9; // the descriptor that the tools print to, here and in the shell

/// Runs a script that finds no other program; returns what it wrote to `output`.
std::string run_shell(std::string script) {
  std::string shell = "/bin/sh";
  std::string option = "-c";
  std::string path = "PATH=/nonexistent";
  const std::array<char *, 4> arguments = {shell.data(), option.data(), script.data(), nullptr};
  const std::array<char *, 2> environment = {path.data(), nullptr};
  static const auto actions = [] {
    posix_spawn_file_actions_t made{};
    posix_spawn_file_actions_init(&made);
    posix_spawn_file_actions_addopen(&made, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    return made;
  }();
  pid_t pid = -1;
  const bool ran = ftruncate(output, 0) == 0 && lseek(output, 0, SEEK_SET) == 0 &&
                   posix_spawn(&pid, shell.c_str(), &actions, nullptr, arguments.data(),
                               environment.data()) == 0;
  expect_equal("(The fuzzer can start a shell.)", true, ran);
  int status = -1;
  while (waitpid(pid, &status, 0) == -1 && errno == EINTR) { // by libFuzzer's timer
  }
  expect_equal("The shell runs the command without an error.", 0, status);
  std::array<char, 8192> bytes{};
  const ssize_t size = pread(output, bytes.data(), bytes.size(), 0);
  return {bytes.data(), static_cast<std::size_t>(size < 0 ? 0 : size)};
}

/// The words that the four tools get from the command for `message`.
std::vector<std::string> tools_words(const std::string &message) {
  std::string script = R"(print() { printf '%s\0' "$@" >&)" + std::to_string(output) + "; }\n";
  for (const char *tool : {"osascript", "zenity", "kdialog", "xmessage"}) {
    script.append(tool).append("() { print ").append(tool).append(" \"$@\"; }\n");
    script.append(platform::alert_command(message));
    script.append("\nunset -f ").append(tool).append("\n");
  }
  const std::string all = run_shell(script);
  std::string_view printed = all;
  std::vector<std::string> words;
  for (std::size_t end = 0; (end = printed.find('\0')) != std::string_view::npos;) {
    words.emplace_back(printed.substr(0, end));
    printed.remove_prefix(end + 1);
  }
  return words;
}

} // namespace

void check(std::string_view input) {
  static const int file = dup2(memfd_create("output", 0), output);
  static const auto reference = tools_words(reference_message);
  const std::string message(input.substr(0, input.find('\0')));
  if (file == output && message.find('\'') == std::string::npos) {
    check_words(tools_words(message), reference, message);
  }
}
