// The icon where there is no panel.

#include "interface.h"
#include "x_server.h"

#include <QAccessible>
#include <QApplication>
#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

using namespace gui_test;

TEST(FloatingIcon, IsTheOnlyWindowAndHasItsName) {
  run_interface(recorded_config(), [](const Interface &interface) {
    for (const QWidget *window : QApplication::topLevelWidgets()) {
      EXPECT_EQ(window->isVisible(), window == interface.icon);
    }
    EXPECT_EQ(interface.icon->toolTip(), "Tandrel");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(interface.icon)->text(QAccessible::Name),
              "Tandrel");
    EXPECT_FALSE(QApplication::quitOnLastWindowClosed());
  });
}

TEST(FloatingIcon, IsAtTheTopRightOfTheWorkArea) {
  run_interface(recorded_config(), [](const Interface &interface) {
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    const QRect icon = interface.icon->geometry();
    EXPECT_EQ(icon.topRight(), area.topRight() + QPoint(-8, 8));
    EXPECT_EQ(icon.size(), QSize(32, 32));
  });
}

TEST(FloatingIcon, ShowsTheBarsOnATile) {
  run_interface(recorded_config(), [](const Interface &interface) {
    const QImage picture = interface.icon->grab().toImage();
    EXPECT_EQ(picture.pixelColor(6, 16).rgb(), QColor(33, 33, 33).rgb());
    EXPECT_EQ(picture.pixelColor(16, 16).name(), QColor::fromRgbF(0.3F, 0.79F, 0.75F).name());
    EXPECT_FALSE(interface.icon->mask().contains(QPoint(0, 0)));
    EXPECT_TRUE(interface.icon->mask().contains(QPoint(31, 16)));
  });
}

TEST(FloatingIcon, OpensTheMenuBelowItByEitherButton) {
  run_interface(recorded_config(), [](const Interface &interface) {
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton}) {
      QTest::mouseClick(interface.icon, button);
      ASSERT_TRUE(interface.menu->isVisible());
      EXPECT_EQ(interface.menu->y(), interface.icon->geometry().bottom() + 1);
      EXPECT_LE(interface.menu->geometry().right(),
                QGuiApplication::primaryScreen()->geometry().right());
      interface.menu->hide();
    }
    QTest::mouseClick(interface.icon, Qt::MiddleButton);
    EXPECT_FALSE(interface.menu->isVisible());
  });
}

TEST(FloatingIcon, ThatIsClosedStaysWithinReach) { // it may be an ordinary window
  run_interface(recorded_config(), [](const Interface &interface) {
    interface.icon->close();
    EXPECT_TRUE(interface.icon->isVisible());
    EXPECT_TRUE(interface.icon->isMinimized());
  });
}

TEST(FloatingIcon, RisesAboveAnotherWindowThatDoesNotFillTheScreen) {
  if (!XServer::is_there()) {
    GTEST_SKIP();
  }
  run_interface(recorded_config(), [](const Interface &interface) {
    XServer server;
    const auto icon = static_cast<xcb_window_t>(interface.icon->winId());
    for (const char *news : {"_NET_ACTIVE_WINDOW", "_NET_CLIENT_LIST_STACKING"}) {
      const xcb_window_t window = server.open_window(interface.icon->geometry());
      EXPECT_LT(server.height_of(icon), server.height_of(window));
      server.set_state(window, "_NET_WM_STATE_FULLSCREEN");
      server.set_root_property("_NET_ACTIVE_WINDOW", window);
      server.set_root_property(news, window);
      EXPECT_LT(server.height_of(icon), server.height_of(window));
      server.set_state(window, "_NET_WM_STATE_MAXIMIZED_VERT");
      server.set_root_property(news, window);
      EXPECT_TRUE(
          run_loop_until([&] { return server.height_of(icon) > server.height_of(window); }));
    }
  });
}

TEST(FloatingIcon, StaysBelowTheOpenMenu) {
  if (!XServer::is_there()) {
    GTEST_SKIP();
  }
  run_interface(recorded_config(), [](const Interface &interface) {
    XServer server;
    open_menu(interface);
    const auto icon = static_cast<xcb_window_t>(interface.icon->winId()),
               menu = static_cast<xcb_window_t>(interface.menu->winId());
    EXPECT_LT(server.height_of(icon), server.height_of(menu));
    server.set_root_property("_NET_ACTIVE_WINDOW", icon);
    EXPECT_LT(server.height_of(icon), server.height_of(menu));
    interface.menu->hide();
  });
}

TEST(Interface, RunReturnsWhenTheLoopIsStopped) {
  bool has_run = false;
  run_interface(recorded_config(), [&](const Interface &) { has_run = true; });
  EXPECT_TRUE(has_run);
  EXPECT_EQ(record().calls, Calls{}); // quit, for one
  for (const QWidget *window : QApplication::topLevelWidgets()) {
    EXPECT_FALSE(window->isVisible());
  }
}
