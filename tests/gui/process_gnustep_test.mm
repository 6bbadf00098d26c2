// What keeps GNUstep from interfering with the process, and how it starts others.

#include "detached.h"
#include "interface.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace gui_test;

namespace {

std::string contents(const std::string &path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

/// A private folder; its destructor removes it and the files named there.
class Folder {
public:
  Folder() {
    char name[] = "/tmp/gui-test-XXXXXX";
    path = mkdtemp(name);
  }
  ~Folder() {
    for (const char *file : {"open", "xdg-open", "opened", "opened.new"}) {
      unlink((path + "/" + file).c_str());
    }
    rmdir(path.c_str());
  }
  /// A program that writes its arguments into the file "opened".
  void add_program(const std::string &name) const {
    const std::string file = path + "/" + name, result = path + "/opened";
    std::ofstream(file) << "#!/bin/sh\necho \"" << name << " $*\" >\"" << result << ".new\"\nmv \""
                        << result << ".new\" \"" << result << "\"\n";
    chmod(file.c_str(), 0700);
  }
  std::string path;
};

/// Sets PATH while it exists.
class SearchPath {
public:
  explicit SearchPath(const std::string &path) : before_(getenv("PATH")) {
    setenv("PATH", path.c_str(), 1);
  }
  ~SearchPath() { setenv("PATH", before_.c_str(), 1); }

private:
  std::string before_;
};

} // namespace

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
  unlink((folder.path + "/mv").c_str());
}

TEST(Detached, DoesNotWaitForTheProgram) {
  const auto before = std::chrono::steady_clock::now();
  EXPECT_TRUE(td::run_detached("exec \"$@\"", {"sleep", "3"}));
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2));
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}
