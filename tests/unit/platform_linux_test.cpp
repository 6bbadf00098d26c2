#include "forbidden_call.h"
#include "interface.h"
#include "lan_address.h"
#include "own_process.h"
#include "platform.h"
#include "special_messages.h"
#include "temporary_folder.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

TEST(Platform, ExecutablePathIsThisPrograms) {
  EXPECT_TRUE(std::filesystem::equivalent(platform::executable_path(), "/proc/self/exe"));
}

TEST(Platform, ClosesDescriptorsOnAnOldKernelToo) {
  EXPECT_TRUE(holds_in_a_process_of_its_own(
      [] { return forbid_call(SYS_close_range, ENOSYS) && closes_descriptors(); }));
}

TEST(Platform, EndsWithItsParent) {
  std::array<int, 2> alive{};
  ASSERT_EQ(pipe(alive.data()), 0);
  for (const auto &[parent_ends_first, number] :
       {std::pair(false, SIGTERM), std::pair(true, SIGTERM), std::pair(false, SIGKILL),
        std::pair(true, SIGKILL)}) {
    // The pipe closes when the last of the two processes has ended.
    EXPECT_TRUE(
        holds_in_a_process_of_its_own([parent_ends_first = parent_ends_first, number = number] {
          std::array<int, 2> ready{};
          std::array<int, 2> go{};
          if (pipe(ready.data()) != 0 || pipe(go.data()) != 0) {
            return false;
          }
          const pid_t parent = getpid();
          char byte = 0;
          if (fork() == 0) {
            close(go[1]);
            while (parent_ends_first && read(go[0], &byte, 1) == -1) {}
            sigset_t blocked;
            sigfillset(&blocked);
            sigprocmask(number == SIGKILL ? SIG_BLOCK : SIG_UNBLOCK, &blocked, nullptr);
            platform::end_with_parent(parent, number);
            (void)write(ready[1], "", 1);
            for (;;) {
              pause();
            }
          }
          return parent_ends_first || read(ready[0], &byte, 1) == 1;
        }));
  }
  close(alive[1]);
  char byte = 0;
  EXPECT_EQ(read(alive[0], &byte, 1), 0);
  close(alive[0]);
}

/// Runs the commands with only recording tools on the PATH: each writes its name and arguments.
struct PathTools : testing::Test {
  TemporaryFolder folder;
  std::string path_before = std::getenv("PATH");

  void SetUp() override { setenv("PATH", ("/no/such:" + folder.path.string()).c_str(), 1); }
  void TearDown() override { setenv("PATH", path_before.c_str(), 1); }
  void add(const std::string &tool) const {
    (void)folder.write(
        tool, "#!/bin/sh\nprintf '%s|' \"${0##*/}\" \"$@\" > " + folder.prefix() + "output\n",
        true);
  }
  /// What the tool that the command ran has written; the command's background jobs are waited for.
  [[nodiscard]] std::string output_of(const std::string &command) const {
    std::filesystem::remove(folder.path / "output");
    EXPECT_EQ(system((command + "\nwait").c_str()), 0);
    return folder.read("output");
  }
};

TEST_F(PathTools, BrowserOpensWithOpenElseWithXdgOpen) {
  const std::string command = platform::browser_command("http://10.0.0.5:4466/");
  add("xdg-open");
  EXPECT_EQ(output_of(command), "xdg-open|http://10.0.0.5:4466/|");
  add("open");
  EXPECT_EQ(output_of(command), "open|http://10.0.0.5:4466/|");
}

TEST_F(PathTools, BrowserOpensInASessionOfItsOwnWhereThatCanBeMade) {
  const std::string command = platform::browser_command("http://10.0.0.5:4466/");
  add("setsid");
  EXPECT_EQ(output_of(command), "setsid|xdg-open|http://10.0.0.5:4466/|");
}

/// kdialog reads a backslash and the character after it as one character.
std::string as_kdialog_reads_it(const std::string &text) {
  std::string read;
  for (auto c = text.begin(); c != text.end(); ++c) {
    if (*c == '\\' && *++c != '\\') {
      return "escape sequence in " + text;
    }
    read += *c;
  }
  return read;
}

TEST_F(PathTools, AlertTakesTheFirstToolFoundAndHandsItTheWholeMessage) {
  // Adds a tool that is to be chosen before those added so far.
  const auto expect_alerts_by = [this](const std::string &tool, const std::string &options) {
    add(tool);
    for (const std::string message : special_messages) {
      std::string output = output_of(platform::alert_command(message));
      if (tool == "kdialog") {
        output = as_kdialog_reads_it(output);
      }
      EXPECT_EQ(output, tool + "|" + options + message + "|");
    }
  };
  (void)folder.write("touch", "#!/bin/sh\n: > " + folder.prefix() + "touched\n", true);
  EXPECT_EQ(output_of(platform::alert_command("text")), "");
  expect_alerts_by("xmessage", "-title|Tandrel|-center|");
  expect_alerts_by("kdialog", "--title|Tandrel|--error|");
  expect_alerts_by("zenity", "--error|--title|Tandrel|--no-markup|--text|");
  add("osascript");
  EXPECT_THAT(output_of(platform::alert_command("text")),
              testing::StartsWith("osascript|-e|display alert"));
  EXPECT_FALSE(std::filesystem::exists(folder.path / "touched"))
      << "a command in a message was run";
}

TEST_F(PathTools, AlertHasAUtf8LocaleWhateverTheUsersIs) {
  (void)folder.write(
      "zenity", "#!/bin/sh\necho \"$LC_ALL|$LC_CTYPE\" > " + folder.prefix() + "output\n", true);
  setenv("LC_ALL", "C", 1);
  EXPECT_EQ(output_of(platform::alert_command("text")), "|C.UTF-8\n");
  unsetenv("LC_ALL");
}

TEST(LanIpv4, IsLoopbackWhenTheInterfacesCannotBeListed) {
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit none{0, limit.rlim_max}; // so the system cannot be asked
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const std::string address = td_lan_ipv4();
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  EXPECT_EQ(address, "127.0.0.1");
}

/// The message on standard error if the folder has no interface.
std::string message_without_interface(const TemporaryFolder &folder) {
  testing::internal::CaptureStderr();
  platform::start_interface_search(folder.prefix());
  EXPECT_EQ(platform::find_interface(folder.prefix(), true), nullptr);
  return testing::internal::GetCapturedStderr();
}

TEST(Platform, WithoutAModuleThereIsNoInterface) {
  const TemporaryFolder folder;
  EXPECT_EQ(message_without_interface(folder), "");
  (void)folder.write("tdgui.so", "not a library");
  EXPECT_THAT(message_without_interface(folder),
              testing::StartsWith("Tandrel: the menu-bar interface is not available: "));
}

TEST(Platform, WithoutProcessesThereIsNoInterface) {
  const TemporaryFolder folder;
  (void)folder.write("tdgui.so", "");
  EXPECT_TRUE(holds_in_a_process_of_its_own([&folder] {
    return forbid_call(SYS_clone, EAGAIN) &&
           message_without_interface(folder) ==
               "Tandrel: the menu-bar interface is not available: " +
                   std::string(std::strerror(EAGAIN)) + ".\n";
  }));
}

} // namespace
