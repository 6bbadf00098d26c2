#include "host.h"
#include "own_process.h"
#include "platform.h"
#include "special_messages.h"
#include "temporary_folder.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include <gmock/gmock.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

TEST(Platform, ExecutablePathIsThisPrograms) {
  EXPECT_TRUE(std::filesystem::equivalent(platform::executable_path(), "/proc/self/exe"));
}

/// Makes close_range() fail as on a kernel that does not have it.
bool forbid_close_range() {
  std::array<sock_filter, 4> code{{
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_close_range, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  }};
  sock_fprog program{code.size(), code.data()};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

TEST(Platform, ClosesDescriptorsOnAnOldKernelToo) {
  EXPECT_TRUE(
      holds_in_a_process_of_its_own([] { return forbid_close_range() && closes_descriptors(); }));
}

TEST(Platform, EndsWithItsParent) {
  std::array<int, 2> alive{};
  ASSERT_EQ(pipe(alive.data()), 0);
  for (const bool parent_ends_first : {false, true}) {
    // The pipe closes when the last of the two processes has ended.
    EXPECT_TRUE(holds_in_a_process_of_its_own([&] {
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
        platform::end_with_parent(parent);
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

/// Runs the commands with recording tools alone on the PATH: each writes its name and arguments.
struct PathTools : testing::Test {
  TemporaryFolder folder;
  std::string path_before = std::getenv("PATH");

  void SetUp() override { setenv("PATH", ("/no/such:" + folder.path.string()).c_str(), 1); }
  void TearDown() override { setenv("PATH", path_before.c_str(), 1); }
  void add(const std::string &tool) const {
    (void)folder.write(
        tool, "#!/bin/sh\nprintf '%s|' \"${0##*/}\" \"$@\" > " + folder.prefix() + "said\n", true);
  }
  /// What the tool that the command ran has written; the command's background jobs are waited for.
  [[nodiscard]] std::string said_by(const std::string &command) const {
    std::filesystem::remove(folder.path / "said");
    EXPECT_EQ(system((command + "\nwait").c_str()), 0);
    return folder.read("said");
  }
};

TEST_F(PathTools, BrowserOpensWithOpenElseWithXdgOpen) {
  const std::string command = platform::browser_command("http://10.0.0.5:4466/");
  add("xdg-open");
  EXPECT_EQ(said_by(command), "xdg-open|http://10.0.0.5:4466/|");
  add("open");
  EXPECT_EQ(said_by(command), "open|http://10.0.0.5:4466/|");
}

TEST_F(PathTools, BrowserOpensInASessionOfItsOwnWhereThatCanBeMade) {
  const std::string command = platform::browser_command("http://10.0.0.5:4466/");
  add("setsid");
  EXPECT_EQ(said_by(command), "setsid|xdg-open|http://10.0.0.5:4466/|");
}

/// kdialog takes a backslash and the character after it for one character.
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
      std::string said = said_by(platform::alert_command(message));
      if (tool == "kdialog") {
        said = as_kdialog_reads_it(said);
      }
      EXPECT_EQ(said, tool + "|" + options + message + "|");
    }
  };
  (void)folder.write("touch", "#!/bin/sh\n: > " + folder.prefix() + "touched\n", true);
  EXPECT_EQ(said_by(platform::alert_command("text")), "");
  expect_alerts_by("xmessage", "-title|Tandrel|-center|");
  expect_alerts_by("kdialog", "--title|Tandrel|--error|");
  expect_alerts_by("zenity", "--error|--title|Tandrel|--no-markup|--text|");
  add("osascript");
  EXPECT_THAT(said_by(platform::alert_command("text")),
              testing::StartsWith("osascript|-e|display alert"));
  EXPECT_FALSE(std::filesystem::exists(folder.path / "touched"))
      << "a command in a message was run";
}

TEST_F(PathTools, AlertHasAUtf8LocaleWhateverTheUsersIs) {
  (void)folder.write("zenity",
                     "#!/bin/sh\necho \"$LC_ALL|$LC_CTYPE\" > " + folder.prefix() + "said\n", true);
  setenv("LC_ALL", "C", 1);
  EXPECT_EQ(said_by(platform::alert_command("text")), "|C.UTF-8\n");
  unsetenv("LC_ALL");
}

TEST(LanIpv4, IsLoopbackWhenTheSystemDoesNotAnswer) {
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit none{0, limit.rlim_max}; // and so no socket to ask by
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const std::string address = td_lan_ipv4();
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  EXPECT_EQ(address, "127.0.0.1");
}

TEST(Platform, WithoutAModuleThereIsNoInterface) {
  const TemporaryFolder folder;
  testing::internal::CaptureStderr();
  EXPECT_EQ(platform::find_interface(folder.prefix()), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  (void)folder.write("tdgui.so", "not a library");
  testing::internal::CaptureStderr();
  EXPECT_EQ(platform::find_interface(folder.prefix()), nullptr);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::StartsWith("Tandrel: the menu-bar interface is not available: "));
}

} // namespace
