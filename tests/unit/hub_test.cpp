#include "hub.h"
#include "tools.h"

#include <algorithm>
#include <chrono>

#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

using Probe = Tools;

TEST_F(Probe, AsksCurl) {
  add("curl");
  EXPECT_EQ(probe_hub(65535), ToolResult::success);
  EXPECT_EQ(said("curl"), "-s|-m|2|-o|/dev/null|http://127.0.0.1:65535/api/health|");
  EXPECT_EQ(probe_hub(0), ToolResult::success);
  EXPECT_EQ(said("curl"), "-s|-m|2|-o|/dev/null|http://127.0.0.1:0/api/health|");
}

TEST_F(Probe, FailsAsCurlDoes) {
  add("curl", "exit 7\n");
  EXPECT_EQ(probe_hub(4466), ToolResult::failure);
  add("curl", "kill -INT $$\n");
  EXPECT_EQ(probe_hub(4466), ToolResult::interrupted);
}

TEST_F(Probe, WithoutCurlFails) {
  testing::internal::CaptureStderr(); // the shell's complaint
  EXPECT_EQ(probe_hub(4466), ToolResult::failure);
  testing::internal::GetCapturedStderr();
}

TEST(AnswersOnLoopback, TellsAListenerFromNone) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr *>(&address), size), 0);
  ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr *>(&address), &size), 0);
  const std::uint16_t port = ntohs(address.sin_port);
  EXPECT_FALSE(answers_on_loopback(port)) << "bound, but not listening";
  ASSERT_EQ(listen(listener, 1), 0);
  EXPECT_TRUE(answers_on_loopback(port));
  for (int i = 0; i < 8; ++i) { // more than the backlog holds: it must not wait for room
    EXPECT_TRUE(answers_on_loopback(port));
  }
  close(listener);
  EXPECT_FALSE(answers_on_loopback(port));
  EXPECT_FALSE(answers_on_loopback(0));
}

/// A hub that is a shell script, probed by a curl that is one too.
struct StartHub : Tools {
  Child hub;
  std::atomic<bool> running{true};

  void SetUp() override {
    Tools::SetUp();
    set_hub("exec /bin/sleep 1000");
  }
  void TearDown() override {
    stop(hub);
    Tools::TearDown();
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
  HubStart start(StartReason reason) { return start_hub(hub, unused_port(), reason, running); }

  /// A port on which nothing listens while the test runs: it is bound by the test itself.
  std::uint16_t unused_port() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(bind(bound_, reinterpret_cast<sockaddr *>(&address), size), 0);
    EXPECT_EQ(getsockname(bound_, reinterpret_cast<sockaddr *>(&address), &size), 0);
    return ntohs(address.sin_port);
  }

  StartHub() = default;
  StartHub(const StartHub &) = delete;
  StartHub &operator=(const StartHub &) = delete;
  StartHub(StartHub &&) = delete;
  StartHub &operator=(StartHub &&) = delete;
  ~StartHub() override { close(bound_); }

private:
  int bound_ = socket(AF_INET, SOCK_STREAM, 0);
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

TEST_F(StartHub, DoesNotBelieveAnAnswerWhenTheHubHasExited) {
  const std::string pid_file = folder.prefix() + "pid";
  set_hub("echo $$ > " + pid_file + "; exec /bin/sleep 1000");
  // The probe succeeds, but only once the hub has exited.
  answer_from_probe(1, "until [ -s " + pid_file + " ]; do :; done\nread -r pid < " + pid_file +
                           "\nkill -KILL $pid\n"
                           "until /bin/ps -o state= -p $pid | /bin/grep -q Z; do :; done\n");
  EXPECT_EQ(start(StartReason::start_up), HubStart::not_ready);
  EXPECT_EQ(hub.pid, -1);
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
  EXPECT_EQ(start_hub(hub, 1, StartReason::port_change, running), HubStart::ready);
  EXPECT_EQ(probes(), 3);
}

TEST_F(StartHub, TakesACtrlCDuringAProbeForTheEndOfTheRun) {
  answer_from_probe(1000, "kill -INT $$\n");
  EXPECT_EQ(start(StartReason::start_up), HubStart::not_ready);
  EXPECT_FALSE(running);
}

} // namespace
