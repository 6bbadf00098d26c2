// GNUstep must not interfere with the process's signals, children and arguments.

#include "interface.h"
#include "process/detached.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace gui_test;

namespace {

volatile std::sig_atomic_t g_last_signal;
void note_signal(int number) {
  g_last_signal = number;
}

constexpr int handled_signals[] = {SIGINT, SIGTERM, SIGHUP};

/// Installs signal handlers before any test makes the application, as the launcher does.
class Handlers : public testing::Environment {
public:
  void SetUp() override {
    for (int number : handled_signals) {
      std::signal(number, note_signal);
    }
  }
};

[[maybe_unused]] testing::Environment *const g_handlers =
    testing::AddGlobalTestEnvironment(new Handlers);

void (*current_handler(int number))(int) {
  struct sigaction action = {};
  sigaction(number, nullptr, &action);
  return action.sa_handler;
}

/// Runs the event loop until `done` returns true, for at most ten seconds; returns its last result.
bool run_loop_until(const std::function<bool()> &done) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!done() && std::chrono::steady_clock::now() < deadline) {
    NSDate *soon = [NSDate dateWithTimeIntervalSinceNow:0.02];
    [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:soon];
  }
  return done();
}

std::string contents(const std::string &path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

bool is_zombie(pid_t pid) {
  const std::string stat = contents("/proc/" + std::to_string(pid) + "/stat");
  return stat.find(") Z ") != std::string::npos;
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

TEST(Process, KeepsItsSignalHandlers) {
  run_interface(full_config(), [](Interface) {
    for (int number : handled_signals) {
      ASSERT_EQ(current_handler(number), note_signal) << number;
      g_last_signal = 0;
      raise(number);
      EXPECT_EQ(g_last_signal, number);
    }
  });
}

TEST(Process, KeepsItsChildrenAfterACopy) {
  run_interface(full_config(), [](Interface interface) {
    const auto child_handler = current_handler(SIGCHLD);
    filled(interface);
    choose(item_titled(interface.menu, @"Copy Dashboard Address"));
    EXPECT_EQ(current_handler(SIGCHLD), child_handler);
    const pid_t child = fork();
    if (child == 0) {
      _exit(7);
    }
    EXPECT_TRUE(run_loop_until([&] { return is_zombie(child); }));
    // A few more rounds, in which GNUstep could reap it.
    int rounds = 0;
    run_loop_until([&] { return ++rounds > 5; });
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, WNOHANG), child);
    EXPECT_EQ(WEXITSTATUS(status), 7);
  });
}

TEST(Process, ACopyLeavesNoChildBehind) {
  run_interface(full_config(), [](Interface interface) {
    filled(interface);
    choose(item_titled(interface.menu, @"Copy Dashboard Address"));
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
  });
}

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
  symlink("/bin/mv", (folder.path + "/mv").c_str());
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
