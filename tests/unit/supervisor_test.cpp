#include "supervisor.h"
#include "temporary_folder.h"

#include <chrono>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct Supervisor : testing::Test {
  TemporaryFolder folder;
  Children children;
  std::mutex mutex;
  std::atomic<bool> running{true};

  Child &add(const std::string &name, const std::string &script) {
    Child child;
    child.name = name;
    child.path = "/bin/sh";
    child.args = {"-c", script};
    child.supervised = true;
    children.push_back(std::move(child));
    return children.back();
  }
  /// Adds a component that writes a line and exits, every time.
  Child &add_exiting(const std::string &name) {
    return add(name, "echo start >> " + folder.prefix() + name + "; exit 0");
  }
  [[nodiscard]] long starts(const std::string &name) const {
    const std::string text = folder.read(name);
    return std::count(text.begin(), text.end(), '\n');
  }
  /// Runs the supervisor until it returns and returns what it printed.
  std::string run() {
    testing::internal::CaptureStderr();
    supervise(children, mutex, running);
    return testing::internal::GetCapturedStderr();
  }
  void TearDown() override {
    for (Child &child : children) {
      stop(child);
    }
  }
};

TEST_F(Supervisor, ReturnsAtOnceWhenTheRunIsOver) {
  running = false;
  ASSERT_TRUE(spawn(add_exiting("hub")));
  EXPECT_EQ(run(), "");
  EXPECT_NE(children[0].pid, -1) << "not polled";
}

TEST_F(Supervisor, GivesUpOnTheSixthExitAndACriticalOneEndsTheRun) {
  children.reserve(2);
  ASSERT_TRUE(spawn(add("receiver", "exec sleep 1000")));
  Child &hub = add_exiting("hub");
  hub.critical = true;
  ASSERT_TRUE(spawn(hub));
  const auto before = Clock::now();
  const std::string output = run();
  EXPECT_GE(Clock::now() - before, milliseconds(6 * 400 + 5 * 500));
  std::string expected;
  for (int i = 0; i < restart_limit; ++i) {
    expected += "Tandrel: restarting the hub...\n";
  }
  EXPECT_EQ(output, expected + "Tandrel: the hub keeps exiting; leaving it stopped.\n");
  EXPECT_EQ(starts("hub"), 6);
  EXPECT_EQ(hub.pid, -1);
  EXPECT_EQ(hub.restarts, 1000);
  EXPECT_TRUE(hub.supervised);
  EXPECT_FALSE(running);
  EXPECT_FALSE(reap(children[0])) << "the others are left running";
}

TEST_F(Supervisor, EndsTheVisitWhenTheCriticalOneIsGivenUp) {
  children.reserve(2);
  Child &hub = add_exiting("hub");
  hub.critical = true;
  hub.restarts = restart_limit;
  ASSERT_TRUE(spawn(hub));
  ASSERT_TRUE(spawn(add_exiting("sender")));
  EXPECT_EQ(run(), "Tandrel: the hub keeps exiting; leaving it stopped.\n");
  EXPECT_NE(children[1].pid, -1) << "not polled any more";
}

TEST_F(Supervisor, DoesNotRetryWhatCouldNotBeStarted) {
  children.reserve(2);
  Child &receiver = add("receiver", "");
  receiver.path = folder.write("td_receiver", "#!/bin/sh\n", true);
  ASSERT_TRUE(spawn(receiver));
  std::filesystem::remove(receiver.path);
  Child &hub = add_exiting("hub"); // the test ends when it is left stopped
  hub.critical = true;
  hub.restarts = restart_limit - 2;
  ASSERT_TRUE(spawn(hub));
  const std::string output = run();
  EXPECT_THAT(output, testing::StartsWith("Tandrel: restarting the receiver...\n"
                                          "Tandrel: could not restart the receiver\n"));
  EXPECT_THAT(output.substr(output.find("hub")), testing::Not(testing::HasSubstr("receiver")));
  EXPECT_EQ(receiver.pid, -1);
  EXPECT_EQ(receiver.restarts, 1);
}

TEST_F(Supervisor, LeavesUnwatchedAndIdleRecordsAlone) {
  children.reserve(3);
  Child &unwatched = add_exiting("sender");
  unwatched.supervised = false;
  ASSERT_TRUE(spawn(unwatched));
  add_exiting("receiver"); // watched, but idle
  Child &hub = add_exiting("hub");
  hub.critical = true;
  hub.restarts = restart_limit;
  ASSERT_TRUE(spawn(hub));
  run();
  EXPECT_NE(unwatched.pid, -1);
  EXPECT_EQ(starts("receiver"), 0);
}

TEST_F(Supervisor, HoldsTheLockThroughARestartWithItsPause) {
  const std::string fifo = folder.prefix() + "restarted";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  Child &child = add("sender", "echo > " + fifo + "; exec sleep 1000");
  child.pid = fork(); // the exit that the supervisor notices
  if (child.pid == 0) {
    _exit(0);
  }
  testing::internal::CaptureStderr();
  std::thread thread([this] { supervise(children, mutex, running); });
  std::ifstream(fifo).get(); // opens when the restarted process writes
  {
    const std::lock_guard<std::mutex> lock(mutex);
    EXPECT_EQ(child.restarts, 1);
    EXPECT_FALSE(reap(child)) << "whoever gets the lock finds the restart complete";
  }
  running = false;
  thread.join();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Tandrel: restarting the sender...\n");
}

TEST_F(Supervisor, ASignalThatEndsTheRunEndsTheSleep) {
  static std::atomic<bool> *flag;
  flag = &running;
  struct sigaction action = {};
  action.sa_handler = [](int) { *flag = false; };
  sigaction(SIGUSR1, &action, nullptr);
  const pthread_t self = pthread_self();
  std::thread sender([self] {
    std::this_thread::sleep_for(milliseconds(50)); // any moment within the sleep
    pthread_kill(self, SIGUSR1);
  });
  const auto before = Clock::now();
  EXPECT_EQ(run(), "");
  EXPECT_LT(Clock::now() - before, milliseconds(400));
  sender.join();
  (void)signal(SIGUSR1, SIG_DFL);
}

} // namespace
