#include "interface.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

bool g_may_end;

/// Quit ends the process by exit(0). Before all tests have run, that must count as a failure.
void fail_unless_allowed() {
  if (!g_may_end) {
    std::fputs("The process ended before its tests did.\n", stderr);
    _exit(EXIT_FAILURE);
  }
}

} // namespace

/// The font configuration, cached as long as the process runs.
extern "C" const char *__lsan_default_suppressions() {
  return "leak:libfontconfig.so\n";
}

/// Plug-ins for displays leave objects of their own behind; without one ours are looked for.
extern "C" int __lsan_is_turned_off() {
  const char *platform = std::getenv("QT_QPA_PLATFORM");
  return platform == nullptr || std::strcmp(platform, "offscreen") != 0;
}

void gui_test::allow_exit() {
  g_may_end = true;
}

int main(int argc, char **argv) {
  // Neither the screen, nor the theme, nor the panel of whoever runs the tests.
  const char *platform = std::getenv("GUI_TEST_PLATFORM");
  setenv("QT_QPA_PLATFORM", platform ? platform : "offscreen", 1);
  unsetenv("XDG_CURRENT_DESKTOP");
  setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
  testing::InitGoogleTest(&argc, argv);
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  std::atexit(fail_unless_allowed);
  const int result = RUN_ALL_TESTS();
  if (result != 0) {
    std::fflush(nullptr);
    _exit(result); // whatever the interface's exit handler makes of it
  }
  gui_test::allow_exit();
  return result;
}
