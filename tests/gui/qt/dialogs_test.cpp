// The ports dialog, its warning, and alerts.

#include "interface.h"
#include "qt/dialogs.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

using namespace gui_test;

namespace {

struct Answer {
  const char *http = nullptr; // null: not changed
  const char *udp = nullptr;
  const char *button = "Apply";
};

void open_settings(const Interface &interface) {
  calls_of(interface, "Settings…");
  ASSERT_NE(dialog(), nullptr);
}

/// Opens the dialog, answers it and returns the calls that followed.
Calls calls_after(const tdgui::GuiConfig &config, const Answer &answer) {
  run_interface(config, [&](const Interface &interface) {
    open_settings(interface);
    if (answer.http) {
      fields(*dialog()).at(0)->setText(answer.http);
    }
    if (answer.udp) {
      fields(*dialog()).at(1)->setText(answer.udp);
    }
    click(*dialog(), answer.button);
    EXPECT_EQ(dialog(), nullptr);
  });
  return record().calls;
}

QStringList buttons_of(const QDialog &dialog) {
  QStringList texts;
  for (const QPushButton *button : dialog.findChildren<QPushButton *>()) {
    texts.append(button->text() + (button->isDefault() ? ", default" : ""));
  }
  return texts;
}

} // namespace

TEST(PortsDialog, ShowsTheCurrentPorts) {
  run_interface(recorded_config(), [](const Interface &interface) {
    open_settings(interface);
    EXPECT_TRUE(shows(*dialog(), "Tandrel Settings"));
    EXPECT_TRUE(shows(*dialog(), "Changing a port restarts the hub and reconnects the sender and "
                                 "receiver. Routing is kept."));
    EXPECT_EQ(buttons_of(*dialog()), (QStringList{"Apply, default", "Cancel"}));
    ASSERT_EQ(fields(*dialog()).size(), 2);
    EXPECT_EQ(fields(*dialog()).at(0)->text(), "8080");
    EXPECT_EQ(fields(*dialog()).at(1)->text(), "8081");
    QStringList labels;
    for (const QLabel *label : dialog()->findChildren<QLabel *>()) {
      if (label->buddy()) {
        labels.append(label->text());
        EXPECT_EQ(label->buddy(), fields(*dialog()).at(labels.size() - 1));
      }
    }
    EXPECT_EQ(labels, (QStringList{"Dashboard port", "Control port"}));
  });
}

TEST(PortsDialog, FieldsTakeAnyText) {
  run_interface(recorded_config(), [](const Interface &interface) {
    open_settings(interface);
    for (QLineEdit *field : fields(*dialog())) {
      EXPECT_EQ(field->validator(), nullptr);
      EXPECT_EQ(field->inputMask(), "");
      field->selectAll();
      QTest::keyClicks(field, " -x12345678901234567890");
      EXPECT_EQ(field->text(), " -x12345678901234567890");
    }
  });
}

TEST(PortsDialog, IsUsedByKeyboard) {
  run_interface(recorded_config(), [](const Interface &interface) {
    open_settings(interface);
    ASSERT_TRUE(run_loop_until([] { return dialog()->isActiveWindow(); }));
    EXPECT_EQ(dialog()->focusWidget(),
              dialog()); // so that a key pressed by accident changes nothing
    for (const char *digits : {"9000", "9001"}) {
      QTest::keyClick(dialog()->focusWidget(), Qt::Key_Tab);
      QTest::keyClicks(dialog()->focusWidget(), digits);
    }
    QTest::keyClick(dialog()->focusWidget(), Qt::Key_Return);
    EXPECT_EQ(dialog(), nullptr);
    EXPECT_EQ(record().calls, Calls{"set_ports 9000 9001 ''"});
  });
}

TEST(PortsDialog, EscapeAndClosingItCancel) {
  run_interface(recorded_config(), [](const Interface &interface) {
    open_settings(interface);
    fields(*dialog()).at(0)->setText("9000");
    QTest::keyClick(dialog(), Qt::Key_Escape);
    EXPECT_EQ(dialog(), nullptr);
    open_settings(interface);
    EXPECT_EQ(fields(*dialog()).at(0)->text(), "8080");
    fields(*dialog()).at(0)->setText("9000");
    dialog()->close(); // as by its window's button
    EXPECT_EQ(dialog(), nullptr);
    EXPECT_EQ(record().calls, Calls{});
  });
}

TEST(PortsDialog, EachMissingGetterHasItsOwnUsualPort) {
  tdgui::GuiConfig config = recorded_config();
  config.http_port = nullptr;
  EXPECT_EQ(calls_after(config, {"4466", "8081"}), Calls{});
  EXPECT_EQ(calls_after(config, {nullptr, "5000"}), Calls{"set_ports 4466 5000 ''"});
  config = recorded_config();
  config.udp_port = nullptr;
  EXPECT_EQ(calls_after(config, {"8080", "4465"}), Calls{});
  EXPECT_EQ(calls_after(config, {"5000", nullptr}), Calls{"set_ports 5000 4465 ''"});
}

TEST(PortsDialog, UnchangedPortsCallNothing) {
  EXPECT_EQ(calls_after(recorded_config(), {}), Calls{});
  EXPECT_EQ(calls_after(recorded_config(), {"8080", " 8081 "}), Calls{});
  EXPECT_EQ(calls_after(recorded_config(), {"8080abc", "+8081"}), Calls{});
}

TEST(PortsDialog, AChangeOfOneOrBothHandsOverBoth) {
  EXPECT_EQ(calls_after(recorded_config(), {"9000", nullptr}), Calls{"set_ports 9000 8081 ''"});
  EXPECT_EQ(calls_after(recorded_config(), {nullptr, "9001"}), Calls{"set_ports 8080 9001 ''"});
  EXPECT_EQ(calls_after(recorded_config(), {"9000", "9001"}), Calls{"set_ports 9000 9001 ''"});
}

TEST(PortsDialog, WhatIsNoPortGoesToTheCallbackAsWell) {
  EXPECT_EQ(calls_after(recorded_config(), {"abc", nullptr}), Calls{"set_ports 0 8081 ''"});
  EXPECT_EQ(calls_after(recorded_config(), {"", "x"}), Calls{"set_ports 0 0 ''"});
  EXPECT_EQ(calls_after(recorded_config(), {"-5", "70000"}), Calls{"set_ports -5 70000 ''"});
}

TEST(PortsDialog, PortsAreComparedAndPassedOnWhole) { // not cut to the 16 bits of a port
  EXPECT_EQ(calls_after(recorded_config(), {"73616", nullptr}), Calls{"set_ports 73616 8081 ''"});
  EXPECT_EQ(calls_after(recorded_config(), {nullptr, "73617"}), Calls{"set_ports 8080 73617 ''"});
}

TEST(PortsDialog, ANumberBeyondTheTypesRangeIsItsLimit) {
  EXPECT_EQ(calls_after(recorded_config(), {"4294995300", "-4294939292"}),
            Calls{"set_ports 2147483647 -2147483648 ''"});
  EXPECT_EQ(calls_after(recorded_config(), {"99999999999999999999999999x", nullptr}),
            Calls{"set_ports 2147483647 8081 ''"});
}

TEST(PortsDialog, CancelCallsNothing) {
  EXPECT_EQ(calls_after(recorded_config(), {"9000", "9001", "Cancel"}), Calls{});
}

TEST(PortsDialog, WithoutSetPortsApplyDoesNothing) {
  tdgui::GuiConfig config = recorded_config();
  config.set_ports = nullptr;
  EXPECT_EQ(calls_after(config, {"9000", "9001"}), Calls{});
}

TEST(PortsDialog, ComparesWithThePortsItShowed) {
  run_interface(recorded_config(), [](const Interface &interface) {
    open_settings(interface);
    record().http = 9999; // changed elsewhere in the meantime
    click(*dialog(), "Apply");
    EXPECT_EQ(record().calls, Calls{});
  });
}

TEST(PortsDialog, IsGoneWhileThePortsChange) {
  tdgui::GuiConfig config = recorded_config();
  config.set_ports = [](int, int, std::string &) {
    record().calls.emplace_back(dialog() ? "dialog is still open" : "dialog is gone");
    return true;
  };
  EXPECT_EQ(calls_after(config, {"9000", nullptr}), Calls{"dialog is gone"});
}

TEST(PortsDialog, IsOpenOnceAndInFrontOfTheMenu) {
  run_interface(recorded_config(), [](const Interface &interface) {
    open_settings(interface);
    const QDialog *first = dialog();
    dialog()->showMinimized();
    QTest::mouseClick(interface.icon, Qt::LeftButton);
    EXPECT_FALSE(interface.menu->isVisible());
    EXPECT_FALSE(first->isMinimized());
    item_titled(interface, "Settings…")->trigger();
    click(*first, "Cancel");
    EXPECT_EQ(dialog(), nullptr);
  });
}

TEST(PortsDialog, ARefusalIsShownOnceAndTheValuesAreNotKept) {
  run_interface(recorded_config(), [](const Interface &interface) {
    record().ports_accepted = false;
    record().refusal = "Port <b>9000</b> & more are täken.";
    open_settings(interface);
    fields(*dialog()).at(0)->setText("9000");
    click(*dialog(), "Apply");
    EXPECT_EQ(record().calls, Calls{"set_ports 9000 8081 ''"});
    ASSERT_NE(dialog(), nullptr);
    EXPECT_TRUE(shows(*dialog(), "Could not change the ports"));
    EXPECT_TRUE(shows(*dialog(), "Port <b>9000</b> & more are täken."));
    for (const QLabel *label : dialog()->findChildren<QLabel *>()) {
      EXPECT_TRUE(label->text().isEmpty() || label->textFormat() == Qt::PlainText);
    }
    EXPECT_EQ(buttons_of(*dialog()), QStringList{"OK, default"});
    click(*dialog(), "OK");
    EXPECT_EQ(dialog(), nullptr);
    open_settings(interface);
    EXPECT_EQ(fields(*dialog()).at(0)->text(), "8080");
    EXPECT_EQ(record().calls, Calls{});
  });
}

TEST(PortsDialog, IsClosedWithTheInterface) {
  run_interface(recorded_config(), [](const Interface &interface) { open_settings(interface); });
  EXPECT_EQ(dialog(), nullptr);
  EXPECT_EQ(record().calls, Calls{});
}

TEST(Alert, IsModalWithOneButton) {
  run_interface(recorded_config(), [](const Interface &) {
    QTimer::singleShot(0, [] {
      ASSERT_NE(dialog(), nullptr);
      EXPECT_TRUE(dialog()->isModal());
      EXPECT_TRUE(shows(*dialog(), "No höb"));
      EXPECT_TRUE(shows(*dialog(), "„Höb“ ist <b>weg</b> – ♫ 消えた."));
      EXPECT_EQ(buttons_of(*dialog()), QStringList{"OK, default"});
      click(*dialog(), "OK");
    });
    tdgui::alert("No höb", "„Höb“ ist <b>weg</b> – ♫ 消えた.");
    EXPECT_EQ(dialog(), nullptr);
  });
}
