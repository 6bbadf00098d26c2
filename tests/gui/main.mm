#include "application.h"

#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

constexpr int skipped = 77; // see CMakeLists.txt

bool g_all_ran;

/// terminate: ends the process by exit(0). Before all tests have run, that must count as a failure.
void fail_unless_all_ran() {
  if (g_all_ran) {
    return;
  }
  std::fputs("The process ended before its tests did.\n", stderr);
  _exit(EXIT_FAILURE);
}

/// Made after the other environments: the process's handlers are there before the application.
class Application : public testing::Environment {
public:
  void SetUp() override {
    if (!gui_test::make_application()) {
      std::fflush(stdout);
      _exit(skipped);
    }
  }
};

} // namespace

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  std::atexit(fail_unless_all_ran);
  testing::AddGlobalTestEnvironment(new Application);
  @autoreleasepool {
    const int result = RUN_ALL_TESTS();
    g_all_ran = true;
    return result;
  }
}
