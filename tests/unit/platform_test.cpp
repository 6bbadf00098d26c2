#include "platform.h"
#include "special_messages.h"
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
  // Adds a tool that is to be chosen before those added so far.
  const auto expect_alerts_by = [this](const std::string &tool, const std::string &options) {
    add(tool);
    for (const std::string message : special_messages) {
      std::string said = tool;
      said += "|" + options + message + "|";
      EXPECT_EQ(said_by(platform::alert_command(message)), said);
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

TEST(Platform, WithoutAModuleThereIsNoInterface) {
  const TemporaryFolder folder;
  EXPECT_EQ(platform::find_interface(folder.prefix()), nullptr);
  (void)folder.write("tdgui.so", "not a library");
  EXPECT_EQ(platform::find_interface(folder.prefix()), nullptr);
}

} // namespace
