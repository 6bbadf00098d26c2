#include "process/process_guards.h"

#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

bool g_all_ran;

/// An application ends its process by exit(0), which must not pass for success.
void fail_unless_all_ran() {
  if (g_all_ran) {
    return;
  }
  std::fputs("The process ended before its tests did.\n", stderr);
  _exit(EXIT_FAILURE);
}

} // namespace

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  std::atexit(fail_unless_all_ran);
  td::prepare_process();
  const int result = RUN_ALL_TESTS();
  g_all_ran = true;
  return result;
}
