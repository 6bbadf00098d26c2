#include "supervisor.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <thread>

namespace {

constexpr timespec pass_interval{0, 400'000'000};
constexpr std::chrono::milliseconds restart_pause{500};

/// Sleeps between two passes; a signal that ends the run ends the sleep too.
void sleep_between_passes(const std::atomic<bool> &running) {
  timespec left = pass_interval;
  // EINTR: a signal was handled here; `left` holds the rest of the time.
  while (running && nanosleep(&left, &left) == -1 && errno == EINTR) {}
}

void restart(Child &child) {
  ++child.restarts;
  std::fprintf(stderr, "Tandrel: restarting the %s...\n", child.name.c_str());
  std::this_thread::sleep_for(restart_pause);
  if (!spawn(child)) {
    std::fprintf(stderr, "Tandrel: could not restart the %s\n", child.name.c_str());
  }
}

void give_up(Child &child, std::atomic<bool> &running) {
  std::fprintf(stderr, "Tandrel: the %s keeps exiting; leaving it stopped.\n", child.name.c_str());
  if (child.critical) {
    running.store(false, std::memory_order_release);
  }
  child.pid = -1;
  child.restarts = restarts_given_up;
}

void look_at(Child &child, std::atomic<bool> &running) {
  const bool watched = child.supervised && child.pid != -1;
  if (!watched || !reap(child)) {
    return;
  }
  if (child.restarts < restart_limit) {
    restart(child);
  } else {
    give_up(child, running);
  }
}

} // namespace

void supervise(std::vector<Child> &children, std::mutex &children_mutex,
               std::atomic<bool> &running) {
  while (running) {
    sleep_between_passes(running);
    if (!running) {
      return; // whoever ended the run may be tearing down the mutex already
    }
    const std::lock_guard<std::mutex> lock(children_mutex);
    for (Child &child : children) {
      if (!running) {
        break;
      }
      look_at(child, running);
    }
  }
}
