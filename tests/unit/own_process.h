/// What a test does in a process of its own.
#pragma once

#include "platform.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

/// Runs `check` in a process of its own; true when it returned true there.
template <typename Check> bool holds_in_a_process_of_its_own(Check check) {
  const pid_t pid = fork();
  if (pid == 0) {
    _exit(check() ? 0 : 1);
  }
  int status = -1;
  EXPECT_EQ(waitpid(pid, &status, 0), pid);
  return status == 0;
}

/// Whether platform::close_descriptors() closes what is open above a descriptor, including one
/// above a limit that was lowered later.
inline bool closes_descriptors() {
  const int kept = open("/dev/null", O_RDONLY);
  const int low = fcntl(kept, F_DUPFD, kept + 1);
  const int high = fcntl(kept, F_DUPFD, 200);
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = 100;
  setrlimit(RLIMIT_NOFILE, &limit);
  platform::close_descriptors(low, platform::highest_descriptor());
  return fcntl(kept, F_GETFD) == 0 && fcntl(low, F_GETFD) == -1 && fcntl(high, F_GETFD) == -1;
}
