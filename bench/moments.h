/// What the programs of the benchmark tell about the moments at which something happens to them.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include <fcntl.h>
#include <unistd.h>

/// A clock in nanoseconds; by default the monotonic one, which is the same in every process.
inline long long nanoseconds(clockid_t clock = CLOCK_MONOTONIC) {
  timespec now{};
  clock_gettime(clock, &now);
  return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

/// Writes "PROGRAM EVENT NANOSECONDS PID" to the FIFO that the variable TD_BENCH_MOMENTS names.
/// Without that variable, or a reader, nothing is written.
inline void tell(const std::string &program, const char *event, long long at = nanoseconds()) {
  const std::string line =
      program + " " + event + " " + std::to_string(at) + " " + std::to_string(getpid()) + "\n";
  const char *path = std::getenv("TD_BENCH_MOMENTS");
  const int fifo = path == nullptr ? -1 : open(path, O_WRONLY | O_NONBLOCK | O_CLOEXEC);
  if (fifo < 0) {
    return;
  }
  if (write(fifo, line.data(), line.size()) < 0) {
    std::perror(path);
  }
  close(fifo);
}
