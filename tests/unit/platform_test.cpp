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

struct PathTools : testing::Test {
  TemporaryFolder folder;
  std::string path_before = std::getenv("PATH");

  void SetUp() override { setenv("PATH", ("/no/such:" + folder.path.string()).c_str(), 1); }
  void TearDown() override { setenv("PATH", path_before.c_str(), 1); }
  void add(const char *tool) const { (void)folder.write(tool, "#!/bin/sh\n", true); }
};

TEST_F(PathTools, BrowserOpensWithOpenElseWithXdgOpen) {
  EXPECT_EQ(platform::browser_command("http://10.0.0.5:4466/"),
            "xdg-open \"http://10.0.0.5:4466/\" &");
  add("open");
  EXPECT_EQ(platform::browser_command("http://10.0.0.5:4466/"), "open \"http://10.0.0.5:4466/\" &");
}

TEST_F(PathTools, AlertTakesTheFirstToolFound) {
  EXPECT_EQ(platform::alert_command("text"), "");
  for (const char *tool : {"xmessage", "kdialog", "zenity", "osascript"}) {
    add(tool);
    EXPECT_THAT(platform::alert_command("text"), testing::StartsWith(tool));
  }
}

TEST_F(PathTools, AToolThatIsNotExecutableDoesNotCount) {
  (void)folder.write("open", "");
  EXPECT_THAT(platform::browser_command("x"), testing::StartsWith("xdg-open"));
}

TEST_F(PathTools, WithoutAPathNothingIsFound) {
  unsetenv("PATH");
  EXPECT_EQ(platform::alert_command("text"), "");
}

TEST(Platform, WithoutAModuleThereIsNoInterface) {
  const TemporaryFolder folder;
  EXPECT_EQ(platform::find_interface(folder.prefix()), nullptr);
  (void)folder.write("tdgui.so", "not a library");
  EXPECT_EQ(platform::find_interface(folder.prefix()), nullptr);
}

} // namespace
