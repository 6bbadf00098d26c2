#include "child.h"
#include "own_process.h"
#include "spawned.h"
#include "temporary_folder.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// The signal that ended the record's process; 0 if none did.
int ending_signal(Child child) {
  const int status = status_of(std::move(child)); // a Mac's macro takes its address
  return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

bool exists(pid_t pid) {
  return kill(pid, 0) == 0;
}

/// Waits until a process that this one started has ended, and leaves it to be reaped.
void wait_until_ended(const Child &child) {
  siginfo_t info{};
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child.pid), &info, WEXITED | WNOWAIT), 0);
}

TEST(ChildRecord, StartsIdle) {
  const Child child;
  EXPECT_EQ(child.pid, -1);
  EXPECT_EQ(child.restarts, 0);
  static_assert(!std::is_copy_constructible_v<Child> && std::is_move_constructible_v<Child>);
}

TEST(Spawn, RunsThePathWithItsArguments) {
  const TemporaryFolder folder;
  const std::string out = folder.prefix() + "out";
  const std::string program =
      folder.write("td_test", "#!/bin/sh\nprintf '%s|' \"$0\" \"$@\" > " + out + "\n", true);
  EXPECT_EQ(status_of(make(program, {"--hub", "", "a b", "'\"$x\\"})), 0);
  EXPECT_EQ(folder.read("out"), program + "|--hub||a b|'\"$x\\|");
}

TEST(Spawn, RefusesWhatIsNotExecutable) {
  const TemporaryFolder folder;
  for (const std::string &path :
       {folder.prefix() + "missing", folder.write("plain", "#!/bin/sh\n")}) {
    Child child = make(path);
    EXPECT_FALSE(spawn(child)) << path;
    EXPECT_EQ(child.pid, -1);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no process was made";
    EXPECT_EQ(errno, ECHILD);
  }
}

TEST(Spawn, WhatCannotBeExecutedEndsWith127) {
  const TemporaryFolder folder;
  const int status = status_of(make(folder.write("garbage", "\x01\x02\x03", true)));
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 127);
}

TEST(Spawn, RestoresTheTwoSignalsThatTheLauncherHandlesAndNoOther) {
  const auto handler = [](int) {};
  (void)signal(SIGINT, handler);
  (void)signal(SIGTERM, SIG_IGN);
  (void)signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(ending_signal(shell("kill -INT $$; exit 1")), SIGINT);
  EXPECT_EQ(ending_signal(shell("kill -TERM $$; exit 1")), SIGTERM);
  const int status = status_of(shell("kill -PIPE $$; exit 7"));
  EXPECT_EQ(WEXITSTATUS(status), 7);
  for (const int number : {SIGINT, SIGTERM, SIGPIPE}) {
    (void)signal(number, SIG_DFL);
  }
}

TEST(Spawn, LeavesTheSignalMaskAsItWas) {
  sigset_t before;
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  EXPECT_EQ(ending_signal(shell("kill -USR1 $$; exit 1")), SIGUSR1);
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (int number = 1; number < 32; ++number) {
    EXPECT_EQ(sigismember(&before, number), sigismember(&after, number)) << number;
  }
}

/// Starts a process that waits, and expects it to lead a group and a session of its own if it is
/// quiet, and otherwise to be in this one's, which are 0 if they are outside this PID namespace.
void expect_group_and_session(bool quiet) {
  const TemporaryFolder folder;
  const std::string ready = folder.prefix() + "ready";
  ASSERT_EQ(mkfifo(ready.c_str(), 0600), 0);
  Child child = shell("echo > " + ready + "; exec sleep 1000");
  child.quiet = quiet;
  ASSERT_TRUE(spawn(child));
  std::ifstream(ready).get(); // opens once the process runs the shell
  EXPECT_EQ(getpgid(child.pid), quiet ? child.pid : getpgrp());
  EXPECT_EQ(getsid(child.pid), quiet ? child.pid : getsid(0));
  stop(child);
}

TEST(Spawn, QuietHasASessionOfItsOwn) {
  expect_group_and_session(true);
}

TEST(Spawn, OtherwiseSharesGroupAndSession) {
  expect_group_and_session(false);
}

TEST(Spawn, PassesDescriptorsOnlyWhenAsked) {
  const int descriptor = open("/dev/null", O_RDONLY); // deliberately without O_CLOEXEC
  ASSERT_GE(descriptor, 3);
  const std::string look = "[ -e /dev/fd/" + std::to_string(descriptor) + " ]";
  EXPECT_NE(status_of(shell(look)), 0);
  EXPECT_EQ(status_of(shell(look), SpawnMode::pass_through), 0);
  close(descriptor);
}

TEST(Spawn, GivesTheEnvironmentThatWasKept) {
  EXPECT_TRUE(holds_in_a_process_of_its_own([] {
    setenv("TD_KEPT", "before", 1);
    setenv("TD_REMOVED", "", 1);
    keep_environment();
    unsetenv("TD_REMOVED");
    setenv("TD_KEPT", "after", 1);
    setenv("TD_ADDED", "", 1);
    return status_of(shell("[ $TD_KEPT = before ] && [ ${TD_REMOVED+set} ] && "
                           "[ ! ${TD_ADDED+set} ]")) == 0;
  }));
}

TEST(Spawn, GivesTheEnvironmentOfThisProcessWhereNoneWasKept) {
  setenv("TD_ADDED", "now", 1);
  EXPECT_EQ(status_of(shell("[ $TD_ADDED = now ]")), 0);
  unsetenv("TD_ADDED");
}

TEST(Reap, IsTrueForAnIdleRecord) {
  Child child = make("/usr/bin/true");
  EXPECT_TRUE(reap(child));
}

TEST(Reap, DistinguishesRunningFromEnded) {
  Child child = shell("read -r line < /dev/null; exec sleep 1000");
  ASSERT_TRUE(spawn(child));
  const pid_t pid = child.pid;
  EXPECT_FALSE(reap(child));
  EXPECT_EQ(child.pid, pid);
  kill(pid, SIGKILL);
  wait_until_ended(child);
  EXPECT_TRUE(reap(child));
  EXPECT_EQ(child.pid, -1);
  EXPECT_FALSE(exists(pid));
}

TEST(Reap, CountsAFailedPollAsRunning) {
  Child child = make("/usr/bin/true");
  ASSERT_TRUE(spawn(child));
  const pid_t pid = child.pid;
  ASSERT_EQ(waitpid(pid, nullptr, 0), pid); // somebody else reaps it
  EXPECT_FALSE(reap(child));
  EXPECT_EQ(child.pid, pid);
}

TEST(Stop, OfAnIdleRecordSendsNothing) {
  static std::atomic<int> received{0};
  (void)signal(SIGTERM, [](int) { ++received; }); // kill(-1) would reach this process too
  Child child = make("/usr/bin/true");
  stop(child);
  EXPECT_EQ(child.pid, -1);
  EXPECT_EQ(received, 0);
  (void)signal(SIGTERM, SIG_DFL);
}

TEST(Stop, ReapsAnEndedProcessAtOnce) {
  Child child = make("/usr/bin/true");
  ASSERT_TRUE(spawn(child));
  const pid_t pid = child.pid;
  wait_until_ended(child);
  const auto before = std::chrono::steady_clock::now();
  stop(child);
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(100))
      << "it slept although the first poll had found the end";
  EXPECT_EQ(child.pid, -1);
  EXPECT_FALSE(exists(pid));
}

TEST(Stop, EndsTheProcessAndLeavesTheRestOfTheRecord) {
  Child child = make("/bin/sleep", {"1000"});
  child.restarts = 3;
  child.critical = true;
  child.supervised = true;
  ASSERT_TRUE(spawn(child));
  const pid_t pid = child.pid;
  stop(child);
  EXPECT_EQ(child.pid, -1);
  EXPECT_FALSE(exists(pid));
  EXPECT_EQ(child.restarts, 3);
  EXPECT_TRUE(child.critical);
  EXPECT_TRUE(child.supervised);
}

TEST(Stop, RightAfterAStartNeedsNoKill) {
  (void)signal(SIGTERM, [](int) {}); // as the launcher has one
  for (int i = 0; i < 20; ++i) {
    Child child = make("/bin/sleep", {"1000"});
    ASSERT_TRUE(spawn(child));
    const auto before = std::chrono::steady_clock::now();
    stop(child);
    ASSERT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(4))
        << "the SIGTERM was lost and only SIGKILL ended the process";
  }
  (void)signal(SIGTERM, SIG_DFL);
}

TEST(Stop, KillsWhatIgnoresSigtermAfterFortyPolls) {
  const TemporaryFolder folder;
  const std::string ready = folder.prefix() + "ready";
  ASSERT_EQ(mkfifo(ready.c_str(), 0600), 0);
  Child child = shell("trap '' TERM; echo > " + ready + "; while :; do sleep 1; done");
  ASSERT_TRUE(spawn(child));
  std::ifstream(ready).get(); // opens once the trap is set
  const pid_t pid = child.pid;
  const auto before = std::chrono::steady_clock::now();
  stop(child);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::seconds(4));
  EXPECT_EQ(child.pid, -1);
  EXPECT_FALSE(exists(pid));
}

TEST(WaitForExit, GoesOnAfterASignal) {
  struct sigaction action = {};
  action.sa_handler = [](int) {}; // without SA_RESTART: the wait is interrupted
  sigaction(SIGUSR1, &action, nullptr);
  Child child = shell("for i in 1 2 3 4 5; do kill -USR1 " + std::to_string(getpid()) +
                      "; sleep 0.01; done; exit 42");
  ASSERT_TRUE(spawn(child));
  const int status = wait_for_exit(child).value_or(-1);
  EXPECT_EQ(WEXITSTATUS(status), 42);
  EXPECT_EQ(child.pid, -1);
  (void)signal(SIGUSR1, SIG_DFL);
}

TEST(WaitForExit, OfAProcessThatIsGoneIsEmpty) {
  Child child = make("/usr/bin/false");
  ASSERT_TRUE(spawn(child));
  ASSERT_EQ(waitpid(child.pid, nullptr, 0), child.pid);
  EXPECT_EQ(wait_for_exit(child), std::nullopt);
  EXPECT_EQ(child.pid, -1);
}

} // namespace
