#include "pause.h"

#include <ctime>

void pause_for(std::chrono::milliseconds length) {
  static const std::atomic<bool> s_on{true};
  pause_while(s_on, length);
}

void pause_while(const std::atomic<bool> &running, std::chrono::milliseconds length) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + length;
  while (running) {
    const std::chrono::nanoseconds left = end - Clock::now();
    if (left.count() <= 0) {
      return;
    }
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    const timespec interval{static_cast<time_t>(seconds.count()),
                            static_cast<long>((left - seconds).count())};
    // EINTR: a signal was handled here; the clock says what is left.
    nanosleep(&interval, nullptr);
  }
}
