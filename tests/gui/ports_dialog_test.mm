// The ports dialog, answered in its modal loop.

#include "interface.h"

#include <gtest/gtest.h>

using namespace gui_test;

namespace {

/// The accessory view, found by its size.
NSView *form_of(NSWindow *panel) {
  for (NSView *view : views_of_class(panel, [NSView class])) {
    if (NSEqualSizes([view frame].size, NSMakeSize(280, 58))) {
      return view;
    }
  }
  ADD_FAILURE() << "no form";
  return nil;
}

NSTextField *part(NSWindow *panel, NSUInteger index) {
  return [[form_of(panel) subviews] objectAtIndex:index];
}

constexpr NSUInteger http_field = 1, udp_field = 3;

void expect_part(NSWindow *panel, NSUInteger index, const char *text, NSRect frame, bool editable) {
  NSTextField *field = part(panel, index);
  EXPECT_STREQ([[field stringValue] UTF8String], text);
  EXPECT_TRUE(NSEqualRects([field frame], frame)) << index;
  EXPECT_EQ([field isEditable], editable) << index;
  EXPECT_TRUE([field formatter] == nil);
}

void type(NSWindow *panel, NSString *keys) {
  for (NSUInteger i = 0; i < [keys length]; ++i) {
    NSString *key = [keys substringWithRange:NSMakeRange(i, 1)];
    [NSApp postEvent:[NSEvent keyEventWithType:NSEventTypeKeyDown
                                            location:NSZeroPoint
                                       modifierFlags:0
                                           timestamp:0
                                        windowNumber:[panel windowNumber]
                                             context:nil
                                          characters:key
                         charactersIgnoringModifiers:key
                                           isARepeat:NO
                                             keyCode:0]
             atStart:NO];
  }
}

struct Answer {
  NSString *http = nil; // nil: not changed
  NSString *udp = nil;
  NSString *button = @"Apply";
};

/// Opens the dialog, answers it and returns the calls that followed.
Calls calls_after(const tdgui::GuiConfig &config, const Answer &answer) {
  run_interface(config, [&](Interface interface) {
    when_alert_runs([&](NSWindow *panel) {
      if (answer.http) {
        [part(panel, http_field) setStringValue:answer.http];
      }
      if (answer.udp) {
        [part(panel, udp_field) setStringValue:answer.udp];
      }
      click(panel, answer.button);
    });
    filled(interface);
    choose(item_titled(interface.menu, @"Settings…"));
    EXPECT_EQ(unanswered_alerts(), 0u);
    EXPECT_TRUE([NSApp modalWindow] == nil);
  });
  return record().calls;
}

} // namespace

TEST(PortsDialog, ShowsTheCurrentPorts) {
  run_interface(full_config(), [](Interface interface) {
    when_alert_runs([](NSWindow *panel) {
      EXPECT_TRUE(shows(panel, @"Tandrel Settings"));
      EXPECT_TRUE(shows(panel, @"Changing a port restarts the hub and reconnects the sender and "
                               @"receiver. Routing is kept."));
      ASSERT_EQ([[form_of(panel) subviews] count], 4u);
      expect_part(panel, 0, "Dashboard port", NSMakeRect(0, 32, 130, 20), false);
      expect_part(panel, 1, "8080", NSMakeRect(136, 30, 80, 22), true);
      expect_part(panel, 2, "Control port", NSMakeRect(0, 4, 130, 20), false);
      expect_part(panel, 3, "8081", NSMakeRect(136, 2, 80, 22), true);
      for (NSTextField *field : editable_fields(panel)) {
        EXPECT_TRUE([panel initialFirstResponder] != field);
        EXPECT_TRUE([field currentEditor] == nil);
      }
      click(panel, @"Cancel");
    });
    choose(item_titled((filled(interface), interface.menu), @"Settings…"));
    EXPECT_EQ(unanswered_alerts(), 0u);
  });
}

TEST(PortsDialog, ApplyIsTheDefaultButton) {
  run_interface(full_config(), [](Interface interface) {
    when_alert_runs([](NSWindow *panel) {
      for (NSView *view : views_of_class(panel, [NSButton class])) {
        NSButton *button = static_cast<NSButton *>(view);
        EXPECT_EQ([[button keyEquivalent] isEqualToString:@"\r"],
                  [[button title] isEqualToString:@"Apply"]);
      }
      click(panel, @"Cancel");
    });
    choose(item_titled((filled(interface), interface.menu), @"Settings…"));
  });
}

TEST(PortsDialog, TabGoesFromFieldToField) {
  run_interface(full_config(), [](Interface interface) {
    when_alert_runs([](NSWindow *panel) {
      NSView *view = part(panel, http_field);
      bool reached = false;
      for (int tabs = 0; tabs < 3 && !reached; ++tabs) {
        view = [view nextValidKeyView];
        reached = view == part(panel, udp_field);
      }
      EXPECT_TRUE(reached);
      click(panel, @"Cancel");
    });
    choose(item_titled((filled(interface), interface.menu), @"Settings…"));
  });
}

TEST(PortsDialog, WithoutGettersShowsTheUsualPorts) {
  tdgui::GuiConfig config = full_config();
  config.http_port = config.udp_port = nullptr;
  run_interface(config, [](Interface interface) {
    when_alert_runs([](NSWindow *panel) {
      EXPECT_STREQ([[part(panel, http_field) stringValue] UTF8String], "4466");
      EXPECT_STREQ([[part(panel, udp_field) stringValue] UTF8String], "4465");
      [part(panel, udp_field) setStringValue:@"5000"];
      click(panel, @"Apply");
    });
    choose(item_titled((filled(interface), interface.menu), @"Settings…"));
    EXPECT_EQ(record().calls, Calls{"set_ports 4466 5000 ''"});
  });
}

TEST(PortsDialog, EachMissingGetterHasItsOwnUsualPort) {
  tdgui::GuiConfig config = full_config();
  config.http_port = nullptr;
  EXPECT_EQ(calls_after(config, {@"4466", @"8081"}), Calls{});
  EXPECT_EQ(calls_after(config, {nil, @"5000"}), Calls{"set_ports 4466 5000 ''"});
  config = full_config();
  config.udp_port = nullptr;
  EXPECT_EQ(calls_after(config, {@"8080", @"4465"}), Calls{});
  EXPECT_EQ(calls_after(config, {@"5000", nil}), Calls{"set_ports 5000 4465 ''"});
}

TEST(PortsDialog, TypedDigitsAreApplied) {
  run_interface(full_config(), [](Interface interface) {
    when_alert_runs([](NSWindow *panel) {
      [panel makeFirstResponder:part(panel, http_field)];
      type(panel, @"9000\t9001\r");
    });
    choose(item_titled((filled(interface), interface.menu), @"Settings…"));
    EXPECT_EQ(record().calls, Calls{"set_ports 9000 9001 ''"});
  });
}

TEST(PortsDialog, UnchangedPortsCallNothing) {
  EXPECT_EQ(calls_after(full_config(), {}), Calls{});
  EXPECT_EQ(calls_after(full_config(), {@"8080", @" 8081 "}), Calls{});
  EXPECT_EQ(calls_after(full_config(), {@"8080abc", @"+8081"}), Calls{});
}

TEST(PortsDialog, AChangeOfOneOrBothPassesBoth) {
  EXPECT_EQ(calls_after(full_config(), {@"9000", nil}), Calls{"set_ports 9000 8081 ''"});
  EXPECT_EQ(calls_after(full_config(), {nil, @"9001"}), Calls{"set_ports 8080 9001 ''"});
  EXPECT_EQ(calls_after(full_config(), {@"9000", @"9001"}), Calls{"set_ports 9000 9001 ''"});
}

TEST(PortsDialog, InvalidPortsGoToTheCallback) {
  EXPECT_EQ(calls_after(full_config(), {@"abc", nil}), Calls{"set_ports 0 8081 ''"});
  EXPECT_EQ(calls_after(full_config(), {@"", @"x"}), Calls{"set_ports 0 0 ''"});
  EXPECT_EQ(calls_after(full_config(), {@"-5", @"70000"}), Calls{"set_ports -5 70000 ''"});
}

TEST(PortsDialog, PortsAreComparedAndPassedOnWhole) { // not cut to the 16 bits of a port
  EXPECT_EQ(calls_after(full_config(), {@"73616", nil}), Calls{"set_ports 73616 8081 ''"});
  EXPECT_EQ(calls_after(full_config(), {nil, @"73617"}), Calls{"set_ports 8080 73617 ''"});
  EXPECT_EQ(calls_after(full_config(), {@"-57456", @"2147483647"}),
            Calls{"set_ports -57456 2147483647 ''"});
}

TEST(PortsDialog, ANumberBeyondTheTypesRangeIsItsLimit) {
  EXPECT_EQ(calls_after(full_config(), {@"4294995300", @"-4294939292"}),
            Calls{"set_ports 2147483647 -2147483648 ''"});
  EXPECT_EQ(calls_after(full_config(), {@"99999999999999999999999999x", nil}),
            Calls{"set_ports 2147483647 8081 ''"});
}

TEST(PortsDialog, CancelCallsNothing) {
  EXPECT_EQ(calls_after(full_config(), {@"9000", @"9001", @"Cancel"}), Calls{});
}

TEST(PortsDialog, WithoutSetPortsApplyDoesNothing) {
  tdgui::GuiConfig config = full_config();
  config.set_ports = nullptr;
  EXPECT_EQ(calls_after(config, {@"9000", @"9001"}), Calls{});
}

TEST(PortsDialog, ComparesWithThePortsItShowed) {
  run_interface(full_config(), [](Interface interface) {
    when_alert_runs([](NSWindow *panel) {
      record().http = 9999; // changed elsewhere in the meantime
      click(panel, @"Apply");
    });
    choose(item_titled((filled(interface), interface.menu), @"Settings…"));
    EXPECT_EQ(record().calls, Calls{});
  });
}

TEST(PortsDialog, ARefusalIsShownOnceAndTheValuesAreNotKept) {
  run_interface(full_config(), [](Interface interface) {
    record().ports_accepted = false;
    record().refusal = "Port 9000 is täken.";
    when_alert_runs([](NSWindow *panel) {
      [part(panel, http_field) setStringValue:@"9000"];
      click(panel, @"Apply");
    });
    when_alert_runs([](NSWindow *panel) {
      EXPECT_TRUE(shows(panel, @"Could not change the ports"));
      EXPECT_TRUE(shows(panel, @"Port 9000 is täken."));
      EXPECT_EQ(record().calls, Calls{"set_ports 9000 8081 ''"});
      click(panel, @"OK");
    });
    choose(item_titled((filled(interface), interface.menu), @"Settings…"));
    EXPECT_EQ(unanswered_alerts(), 0u);
    when_alert_runs([](NSWindow *panel) {
      EXPECT_STREQ([[part(panel, http_field) stringValue] UTF8String], "8080");
      click(panel, @"Cancel");
    });
    choose(item_titled((filled(interface), interface.menu), @"Settings…"));
    EXPECT_EQ(record().calls.size(), 1u);
  });
}
