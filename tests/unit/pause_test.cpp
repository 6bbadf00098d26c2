#include "pause.h"

#include <csignal>
#include <thread>

#include <gtest/gtest.h>
#include <pthread.h>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::atomic<bool> s_running{true};

/// Sends this thread SIGUSR1 continuously until it is stopped, for 5 s at most.
struct Flood {
  std::atomic<bool> over{false};
  std::atomic<bool> gave_up{false};
  std::thread sender;

  explicit Flood(void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(SIGUSR1, &action, nullptr);
    sender = std::thread([this, self = pthread_self()] { send(self); });
  }
  Flood(const Flood &) = delete;
  Flood &operator=(const Flood &) = delete;
  Flood(Flood &&) = delete;
  Flood &operator=(Flood &&) = delete;
  ~Flood() {
    over = true;
    sender.join();
    (void)signal(SIGUSR1, SIG_DFL);
  }
  void send(pthread_t target) {
    const auto limit = Clock::now() + std::chrono::seconds(5);
    while (!over) {
      if (Clock::now() > limit) {
        gave_up = true;
        return;
      }
      pthread_kill(target, SIGUSR1);
    }
  }
};

TEST(Pause, LastsItsLength) {
  const auto before = Clock::now();
  pause_for(milliseconds(100));
  EXPECT_GE(Clock::now() - before, milliseconds(100));
}

TEST(Pause, MayBeLongerThanASecond) {
  const auto before = Clock::now();
  pause_for(milliseconds(1100));
  EXPECT_GE(Clock::now() - before, milliseconds(1100));
}

TEST(Pause, IsNeitherCutShortNorStretchedByAFloodOfSignals) {
  const Flood flood([](int) {});
  const auto before = Clock::now();
  pause_for(milliseconds(100));
  EXPECT_GE(Clock::now() - before, milliseconds(100));
  EXPECT_FALSE(flood.gave_up);
}

TEST(PauseWhile, LastsItsLengthWhenNothingHappens) {
  const std::atomic<bool> running{true};
  const auto before = Clock::now();
  pause_while(running, milliseconds(100));
  EXPECT_GE(Clock::now() - before, milliseconds(100));
}

TEST(PauseWhile, EndsWithTheRun) {
  s_running = true;
  const Flood flood([](int) { s_running = false; });
  const auto before = Clock::now();
  pause_while(s_running, std::chrono::seconds(20));
  EXPECT_LT(Clock::now() - before, std::chrono::seconds(20));
}

TEST(PauseWhile, DoesNotBeginWhenTheRunIsOver) {
  const std::atomic<bool> running{false};
  const auto before = Clock::now();
  pause_while(running, std::chrono::seconds(20));
  EXPECT_LT(Clock::now() - before, std::chrono::seconds(20));
}

} // namespace
