#include "platform.h"
#include "temporary_folder.h"

#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>

namespace {

TEST(Platform, ExecutablePathIsThisPrograms) {
  EXPECT_TRUE(std::filesystem::equivalent(platform::executable_path(), "/proc/self/exe"));
}

TEST(Platform, ClosesDescriptorsFromTheFirstOn) {
  const pid_t pid = fork();
  if (pid == 0) {
    const int kept = open("/dev/null", O_RDONLY);
    const int low = fcntl(kept, F_DUPFD, kept + 1);
    const int high = fcntl(kept, F_DUPFD, 200);
    platform::close_descriptors_from(low);
    _exit(fcntl(kept, F_GETFD) == 0 && fcntl(low, F_GETFD) == -1 && fcntl(high, F_GETFD) == -1 ? 0
                                                                                               : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  EXPECT_EQ(status, 0);
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

TEST_F(PathTools, AlertTakesTheFirstToolFoundAndHandsItTheWholeMessage) {
  const std::string message = "two\nlines \"q\" \\n $x `y` <b> %s \x80é";
  const std::string command = platform::alert_command(message);
  EXPECT_EQ(said_by(command), "");
  add("xmessage");
  EXPECT_EQ(said_by(command), "xmessage|-title|Tandrel|-center|" + message + "|");
  add("kdialog");
  EXPECT_EQ(said_by(command), "kdialog|--title|Tandrel|--error|" + message + "|");
  add("zenity");
  EXPECT_EQ(said_by(command), "zenity|--error|--title|Tandrel|--no-markup|--text|" + message + "|");
  add("osascript");
  EXPECT_THAT(said_by(command), testing::StartsWith("osascript|-e|display alert"));
}

TEST(Platform, WithoutAModuleThereIsNoInterface) {
  const TemporaryFolder folder;
  EXPECT_EQ(platform::find_interface(folder.prefix()), nullptr);
  (void)folder.write("tdgui.so", "not a library");
  EXPECT_EQ(platform::find_interface(folder.prefix()), nullptr);
}

} // namespace
