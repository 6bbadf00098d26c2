#include "pause.h"

#include <ctime>

void pause_for(std::chrono::milliseconds length) {
  static const std::atomic<bool> s_on{true};
  pause_while(s_on, length);
}

void pause_while(const std::atomic<bool> &running, std::chrono::milliseconds length) {
  using std::chrono::duration_cast;
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + length;
  for (auto left = end - Clock::now(); running && left > Clock::duration::zero();
       left = end - Clock::now()) {
    const auto seconds = duration_cast<std::chrono::seconds>(left);
    const std::chrono::nanoseconds rest = left - seconds;
    const timespec interval{static_cast<time_t>(seconds.count()), static_cast<long>(rest.count())};
    // EINTR: a signal was handled here; the clock says what is left.
    nanosleep(&interval, nullptr);
  }
}
