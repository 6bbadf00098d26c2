// Where the icon is with each kind of panel. The toolkit decides once in a process which kind it
// uses, so each test has a process of its own.

#include "bus.h"
#include "interface.h"
#include "qt/application.h"
#include "x_server.h"

#include <QApplication>
#include <QTimer>
#include <chrono>

#include <gtest/gtest.h>
#include <unistd.h>

using namespace gui_test;

namespace {

const testing::ExitedWithCode success(EXIT_SUCCESS);

bool floats() {
  const QWidget *icon = floating_icon();
  return icon && icon->isVisible();
}

/// How long it takes from here until the icon floats.
double seconds_until_it_floats() {
  const auto start = std::chrono::steady_clock::now();
  std::chrono::duration<double> taken{};
  td::make_application();
  QTimer::singleShot(0, [&] {
    EXPECT_TRUE(run_loop_until(floats));
    taken = std::chrono::steady_clock::now() - start;
    QCoreApplication::exit();
  });
  tdgui::run(recorded_config());
  return taken.count();
}

void find_a_stopped_bus() {
  const Bus bus;
  bus.stop();
  const double seconds = seconds_until_it_floats();
  EXPECT_GE(seconds, 0.5); // the interface has waited for the bus
  EXPECT_LE(seconds, 5);
}

void find_a_silent_watcher() {
  const Bus bus;
  td::make_application();
  Watcher watcher(bus);
  watcher.answers = false;
  EXPECT_LE(seconds_until_it_floats(), 5);
}

void follow_a_tray() {
  run_interface(recorded_config(), [](const Interface &) {
    XServer server;
    for (int round = 0; round < 2; ++round) {
      const xcb_window_t tray = server.open_tray();
      EXPECT_TRUE(run_loop_until([] { return !floats(); }));
      server.close(tray);
      EXPECT_TRUE(run_loop_until(floats));
    }
  });
}

[[noreturn]] void end_after(void (*test)()) {
  allow_exit();
  test();
  _exit(testing::Test::HasFailure() ? 1 : 0);
}

} // namespace

TEST(Panel, OfXTakesTheIconAndGivesItBack) {
  if (!XServer::is_there()) {
    GTEST_SKIP();
  }
  EXPECT_EXIT(end_after(follow_a_tray), success, "");
}

TEST(Panel, IsNotWaitedForWhereTheBusIsStopped) {
  EXPECT_EXIT(end_after(find_a_stopped_bus), success, "");
}

TEST(Panel, IsNotWaitedForWhereTheWatcherIsSilent) {
  EXPECT_EXIT(end_after(find_a_silent_watcher), success, "");
}
