// What choosing an item does beyond what the menu's table says.

#include "interface.h"
#include "programs.h"

#include <QApplication>
#include <QClipboard>
#include <QTest>
#include <cstdlib>
#include <fstream>

#include <fcntl.h>
#include <gtest/gtest.h>

using namespace gui_test;

namespace {

const QString at_launch = "Open Dashboard at Launch";

QString copied() {
  return QApplication::clipboard()->text();
}

/// What the desktop's command was called with once the item has been chosen.
std::string opened_by(const Interface &interface) {
  const Folder folder;
  folder.add_program("open");
  folder.add_program("xdg-open");
  const SearchPath path(folder.path + ":" + getenv("PATH"));
  EXPECT_EQ(calls_of(interface, "Open Dashboard"), Calls{});
  EXPECT_TRUE(run_loop_until([&] { return !contents(folder.path + "/opened").empty(); }));
  return contents(folder.path + "/opened");
}

/// Quits by the menu and reports what follows.
void quit_by_menu(const tdgui::GuiConfig &config) {
  allow_exit();
  std::atexit([] { report("exit handler"); });
  run_interface(config, [](const Interface &interface) { calls_of(interface, "Quit Tandrel"); });
  report("run() has returned");
}

void note_quit() {
  report("quit");
}

void note_fallback() {
  report("fallback");
}

const testing::ExitedWithCode success(EXIT_SUCCESS);

} // namespace

TEST(Actions, NameTheComponentInUtf8) {
  tdgui::GuiConfig config = recorded_config();
  config.components = {{"höb ♫ 消", "Hub"}};
  config.is_running = [](const std::string &name) { return name == "höb ♫ 消"; };
  run_interface(config, [](const Interface &interface) {
    EXPECT_EQ(calls_of(interface, "Stop", "Hub"), Calls{"stop höb ♫ 消"});
    EXPECT_EQ(calls_of(interface, "Restart All", "All Components"),
              (Calls{"stop höb ♫ 消", "start höb ♫ 消"}));
  });
}

TEST(Actions, ThatAreDisabledDoNothing) {
  run_interface(recorded_config(), [](const Interface &interface) {
    EXPECT_EQ(calls_of(interface, "Start", "Hub"), Calls{});
    record().running["hub"] = false;
    EXPECT_EQ(calls_of(interface, "Stop", "Hub"), Calls{});
    EXPECT_EQ(calls_of(interface, "Restart", "Hub"), Calls{});
  });
}

TEST(Actions, ToggleFlipsThePreferenceAndTheNextOpeningShowsIt) {
  run_interface(recorded_config(), [](const Interface &interface) {
    EXPECT_EQ(calls_of(interface, at_launch), Calls{"open_browser on"});
    EXPECT_FALSE(item_titled(interface, at_launch)->isChecked());
    EXPECT_EQ(calls_of(interface, at_launch), Calls{"open_browser off"});
    EXPECT_TRUE(item_titled(interface, at_launch)->isChecked());
    open_menu(interface);
    EXPECT_FALSE(item_titled(interface, at_launch)->isChecked());
  });
}

TEST(Actions, OpenDashboardRunsTheDesktopsCommandWithTheAddress) {
  tdgui::GuiConfig config = recorded_config();
  config.url = "http://localhost:1/?a=b&c='d'";
  run_interface(config, [&](const Interface &interface) {
    EXPECT_EQ(opened_by(interface), "open " + config.url + "\n");
  });
}

TEST(Actions, OpenDashboardHandsNeitherDescriptorNorFatalWarningsOver) {
  const Folder folder;
  const std::string inherited = folder.path + "/inherited", program = folder.path + "/open",
                    opened = folder.path + "/opened";
  std::ofstream(program) << "#!/bin/sh\n(env; ls -l /proc/self/fd) >'" << opened << ".new'; mv '"
                         << opened << ".new' '" << opened << "'\n";
  chmod(program.c_str(), 0700);
  const int descriptor = open(inherited.c_str(), O_CREAT | O_WRONLY, 0600);
  const SearchPath path(folder.path + ":" + getenv("PATH"));
  run_interface(recorded_config(), [&](const Interface &interface) {
    calls_of(interface, "Open Dashboard");
    EXPECT_TRUE(run_loop_until([&] { return !contents(opened).empty(); }));
  });
  EXPECT_NE(contents(opened).find("/dev/null"), std::string::npos);
  EXPECT_EQ(contents(opened).find("DBUS_FATAL_WARNINGS"), std::string::npos);
  EXPECT_EQ(contents(opened).find(inherited), std::string::npos) << contents(opened);
  close(descriptor);
}

TEST(Actions, CopyPutsTheAddressOnTheClipboard) {
  run_interface(recorded_config(), [](const Interface &interface) {
    QApplication::clipboard()->setText("something else");
    EXPECT_EQ(calls_of(interface, "Copy Dashboard Address"), Calls{});
    EXPECT_EQ(copied(), "http://localhost:8080/");
  });
}

TEST(Actions, TheAddressStaysAfterAPortChange) {
  run_interface(recorded_config(), [](const Interface &interface) {
    calls_of(interface, "Settings…");
    fields(*dialog()).at(0)->setText("9000");
    click(*dialog(), "Apply");
    EXPECT_EQ(record().calls, Calls{"set_ports 9000 8081 ''"});
    open_menu(interface);
    EXPECT_EQ(interface.menu->actions().at(1)->text(), "http://localhost:8080/");
    EXPECT_EQ(opened_by(interface), "open http://localhost:8080/\n");
    calls_of(interface, "Copy Dashboard Address");
    EXPECT_EQ(copied(), "http://localhost:8080/");
  });
}

TEST(Actions, AndTextsAreThoseOfTheConfigAtTheStart) {
  tdgui::GuiConfig config = recorded_config();
  run_interface(config, [&](const Interface &interface) {
    config = tdgui::GuiConfig();
    config.status = "other";
    open_menu(interface);
    EXPECT_EQ(interface.menu->actions().at(0)->text(), "Tandrel 9.9");
    EXPECT_EQ(calls_of(interface, "Stop", "Receiver"), Calls{"stop receiver"});
    EXPECT_EQ(calls_of(interface, at_launch), Calls{"open_browser on"});
  });
}

TEST(Shortcuts, ActWhileTheMenuIsOpenAndCloseIt) {
  run_interface(recorded_config(), [](const Interface &interface) {
    open_menu(interface);
    QApplication::clipboard()->setText("something else");
    QTest::keyClick(interface.menu, Qt::Key_C);
    EXPECT_EQ(copied(), "something else");
    EXPECT_TRUE(interface.menu->isVisible());
    QTest::keyClick(interface.menu, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(copied(), "http://localhost:8080/");
    EXPECT_FALSE(interface.menu->isVisible());
    QTest::keyClick(interface.icon, Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(dialog(), nullptr);
  });
}

TEST(Shortcuts, ActWhileASubmenuIsOpen) {
  run_interface(recorded_config(), [](const Interface &interface) {
    open_menu(interface);
    QMenu *submenu = item_titled(interface, "All Components")->menu();
    for (int down = 0; down < 6; ++down) { // past those that are disabled
      QTest::keyClick(interface.menu, Qt::Key_Down);
    }
    QTest::keyClick(interface.menu, Qt::Key_Right);
    ASSERT_TRUE(submenu->isVisible());
    QTest::keyClick(submenu, Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_FALSE(submenu->isVisible());
    EXPECT_FALSE(interface.menu->isVisible());
    ASSERT_NE(dialog(), nullptr);
    click(*dialog(), "Cancel");
  });
}

TEST(Quit, CallsQuitAndEndsTheProcessByItsExitHandlers) {
  tdgui::GuiConfig config = recorded_config();
  config.quit = note_quit;
  config.quit_fallback = note_fallback;
  EXPECT_EXIT(quit_by_menu(config), success, "(^|\n)1 quit\n2 exit handler\n$");
}

TEST(Quit, TakesTheFallbackOnlyWithoutQuit) {
  tdgui::GuiConfig config = recorded_config();
  config.quit = nullptr;
  config.quit_fallback = note_fallback;
  EXPECT_EXIT(quit_by_menu(config), success, "(^|\n)1 fallback\n2 exit handler\n$");
}

TEST(Quit, WithoutAnyCallbackEndsTheProcess) {
  tdgui::GuiConfig config;
  config.components = recorded_config().components;
  EXPECT_EXIT(quit_by_menu(config), success, "(^|\n)1 exit handler\n$");
}

TEST(Quit, EndsTheProcessWhileADialogIsOpen) {
  tdgui::GuiConfig config = recorded_config();
  config.quit = note_quit;
  const auto quit = [](const Interface &interface) {
    item_titled(interface, "Settings…")->trigger();
    EXPECT_NE(dialog(), nullptr);
    item_titled(interface, "Quit Tandrel")->trigger(); // a panel shows its own menu meanwhile
  };
  EXPECT_EXIT(
      {
        allow_exit();
        run_interface(config, quit);
      },
      success, "(^|\n)1 quit\n$");
}
