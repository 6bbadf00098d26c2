#include "supervisor.h"

#include "pause.h"

#include <chrono>
#include <cstdio>

namespace {

constexpr std::chrono::milliseconds pass_interval{400};
constexpr std::chrono::milliseconds restart_pause{500};

void restart(Child &child) {
  ++child.restarts;
  std::fprintf(stderr, "Tandrel: restarting the %s...\n", child.name.c_str());
  pause_for(restart_pause);
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

void poll_child(Child &child, std::atomic<bool> &running) {
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

void supervise(Children &children, std::mutex &children_mutex, std::atomic<bool> &running) {
  while (running) {
    pause_while(running, pass_interval); // a signal that ends the run ends the pause too
    if (!running) {
      return; // whoever ended the run may be tearing down the mutex already
    }
    const std::lock_guard<std::mutex> lock(children_mutex);
    for (Child &child : children) {
      if (!running) {
        break;
      }
      poll_child(child, running);
    }
  }
}
