// What keeps GNUstep from interfering with the process, and how it starts others.

#include "detached.h"
#include "interface.h"
#include "programs.h"

#include <chrono>
#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace gui_test;

TEST(Process, HidesItsArguments) {
  @autoreleasepool {
    EXPECT_EQ([[[NSProcessInfo processInfo] arguments] count], 1u);
  }
}

TEST(Process, ShowsNoIconWindow) {
  @autoreleasepool {
    EXPECT_TRUE([[NSUserDefaults standardUserDefaults] boolForKey:@"GSSuppressAppIcon"]);
  }
}

TEST(OpenUrl, RunsOpenWithTheAddress) {
  Folder folder;
  folder.add_program("open");
  folder.add_program("xdg-open");
  SearchPath path(folder.path + ":" + getenv("PATH"));
  @autoreleasepool {
    NSURL *url = [NSURL URLWithString:@"http://localhost:1/?a=b&c='d'"];
    EXPECT_TRUE([[NSWorkspace sharedWorkspace] openURL:url]);
    EXPECT_TRUE(run_loop_until([&] { return !contents(folder.path + "/opened").empty(); }));
    EXPECT_EQ(contents(folder.path + "/opened"),
              std::string("open ") + [[url absoluteString] UTF8String] + "\n");
  }
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(OpenUrl, RunsXdgOpenWhereThereIsNoOpen) {
  Folder folder;
  folder.add_program("xdg-open");
  ASSERT_EQ(symlink("/bin/mv", (folder.path + "/mv").c_str()), 0);
  {
    SearchPath path(folder.path);
    @autoreleasepool {
      NSURL *url = [NSURL URLWithString:@"http://localhost:1/"];
      EXPECT_TRUE([[NSWorkspace sharedWorkspace] openURL:url]);
      EXPECT_TRUE(run_loop_until([&] { return !contents(folder.path + "/opened").empty(); }));
      EXPECT_EQ(contents(folder.path + "/opened"), "xdg-open http://localhost:1/\n");
    }
  }
}

TEST(Detached, DoesNotWaitForTheProgram) {
  const auto before = std::chrono::steady_clock::now();
  EXPECT_TRUE(td::run_detached("exec \"$@\"", {"sleep", "3"}));
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2));
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}
