#include "end_of_test.h"
#include "fake_tools.h"
#include "hub.h"
#include "listener.h"

#include <algorithm>
#include <chrono>

#include <gmock/gmock.h>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

using Probe = FakeTools;

TEST_F(Probe, AsksCurl) {
  add("curl");
  EXPECT_TRUE(probe_hub(65535));
  EXPECT_EQ(output_of("curl"), "-s|-m|2|-o|/dev/null|http://127.0.0.1:65535/api/health|");
  EXPECT_TRUE(probe_hub(0));
  EXPECT_EQ(output_of("curl"), "-s|-m|2|-o|/dev/null|http://127.0.0.1:0/api/health|");
}

TEST_F(Probe, FailsAsCurlDoes) {
  add("curl", "exit 7\n");
  EXPECT_FALSE(probe_hub(4466));
}

TEST_F(Probe, WithoutCurlFails) {
  testing::internal::CaptureStderr(); // the shell's error message
  EXPECT_FALSE(probe_hub(4466));
  testing::internal::GetCapturedStderr();
}

TEST_F(Probe, AsksNoProxy) {
  add("curl", "[ \"$no_proxy\" = 127.0.0.1 ]\n");
  EXPECT_TRUE(probe_hub(4466));
}

/// A hub that is a shell script, probed by a curl that is one, too. Its standard input is the
/// listening socket.
struct StartHub : FakeTools {
  Listener listener;
  StandardInput input{listener.descriptor()};
  Child hub;
  std::atomic<bool> running{true};

  void SetUp() override {
    FakeTools::SetUp();
    set_hub("exec /bin/sleep 1000");
  }
  void TearDown() override {
    stop(hub);
    FakeTools::TearDown();
  }
  void set_hub(const std::string &script) {
    hub.path = folder.write("td_hub", "#!/bin/sh\n" + script + "\n", true);
  }
  /// Lets the probe succeed from its `count`th call on. `before` runs at each call.
  void answer_from_probe(int count, const std::string &before = "") const {
    add("curl", before + "echo >> " + folder.prefix() + "probes\n[ $(/usr/bin/wc -l < " +
                    folder.prefix() + "probes) -ge " + std::to_string(count) + " ]\n");
  }
  [[nodiscard]] long probes() const {
    const std::string lines = folder.read("probes");
    return std::count(lines.begin(), lines.end(), '\n');
  }
  HubStart start(StartReason reason) { return start_hub(hub, listener.port(), reason, running); }
};

TEST_F(StartHub, IsReadyAtTheFirstAnswer) {
  answer_from_probe(3);
  EXPECT_EQ(start(StartReason::start_up), HubStart::ready);
  EXPECT_EQ(probes(), 3);
  EXPECT_FALSE(reap(hub));
}

TEST_F(StartHub, WaitsBetweenTwoProbes) {
  answer_from_probe(3);
  const auto before = Clock::now();
  EXPECT_EQ(start(StartReason::start_up), HubStart::ready);
  EXPECT_GE(Clock::now() - before, milliseconds(200));
}

TEST_F(StartHub, WaitsBeforeTheFirstProbeOfAPortChange) {
  answer_from_probe(1);
  const auto before = Clock::now();
  EXPECT_EQ(start(StartReason::port_change), HubStart::ready);
  EXPECT_GE(Clock::now() - before, milliseconds(100));
}

TEST_F(StartHub, OfAMissingHubLeavesTheRecordIdle) {
  answer_from_probe(1);
  hub.path += "_missing";
  EXPECT_EQ(start(StartReason::start_up), HubStart::not_spawned);
  EXPECT_EQ(hub.pid, -1);
  EXPECT_EQ(probes(), 0);
}

TEST_F(StartHub, EndsWithTheHub) {
  set_hub("exit 0");
  answer_from_probe(1000);
  EXPECT_EQ(start(StartReason::start_up), HubStart::not_ready);
  EXPECT_EQ(hub.pid, -1);
}

TEST_F(StartHub, RejectsAnAnswerWhenTheHubHasExited) {
  const std::string pid_file = folder.prefix() + "pid";
  set_hub("echo $$ > " + pid_file + "; exec /bin/sleep 1000");
  // The probe succeeds, but only once the hub has exited.
  answer_from_probe(1, "until [ -s " + pid_file + " ]; do :; done\nread -r pid < " + pid_file +
                           "\nkill -KILL $pid\n"
                           "until /bin/ps -o state= -p $pid | /usr/bin/grep -q Z; do :; done\n");
  EXPECT_EQ(start(StartReason::start_up), HubStart::not_ready);
  EXPECT_EQ(hub.pid, -1);
}

TEST_F(StartHub, RejectsAnotherProgramsAnswer) {
  set_hub("exec < /dev/null; exec /bin/sleep 1000"); // only the test has the port
  answer_from_probe(1);
  EXPECT_EQ(start(StartReason::start_up), HubStart::not_ready);
  EXPECT_EQ(probes(), 100);
}

TEST_F(StartHub, AcceptsAHubThatAScriptStarted) {
  const EndOfTest end(folder.prefix() + "end");
  set_hub("exec 3<&0 </dev/null; " + end.wait_command() + " <&3 3<&- & exec 3<&-; wait");
  answer_from_probe(1);
  EXPECT_EQ(start(StartReason::start_up), HubStart::ready);
}

TEST_F(StartHub, MakesAHundredAttempts) {
  answer_from_probe(1000);
  EXPECT_EQ(start(StartReason::start_up), HubStart::not_ready);
  EXPECT_EQ(probes(), 100);
  EXPECT_NE(hub.pid, -1) << "the caller stops it";
}

TEST_F(StartHub, IsEndedByTheEndOfTheRunAtStartUpOnly) {
  answer_from_probe(3);
  running = false;
  EXPECT_EQ(start(StartReason::start_up), HubStart::not_ready);
  EXPECT_EQ(probes(), 0);
  stop(hub);
  EXPECT_EQ(start(StartReason::port_change), HubStart::ready);
  EXPECT_EQ(probes(), 3);
}

} // namespace
