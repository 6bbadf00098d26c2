#include "own_process.h"
#include "platform.h"

#include <csignal>

#include <gtest/gtest.h>

namespace {

TEST(Platform, ClosesDescriptors) {
  EXPECT_TRUE(holds_in_a_process_of_its_own(closes_descriptors));
}

TEST(Platform, ASuspendedNewProcessBlocksNobody) {
  const auto suspend = [](const void * /*argument*/) {
    kill(getpid(), SIGSTOP);
    _exit(7);
  };
  const pid_t pid = platform::fork_to_execute(suspend, nullptr, true);
  int status = 0;
  ASSERT_EQ(waitpid(pid, &status, WUNTRACED), pid);
  EXPECT_TRUE(WIFSTOPPED(status));
  kill(pid, SIGCONT);
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  EXPECT_EQ(WEXITSTATUS(status), 7);
}

} // namespace
