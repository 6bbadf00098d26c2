// What choosing an item does, beyond the menu's table.

#include "application.h"
#include "interface.h"

#include <gtest/gtest.h>

using namespace gui_test;

namespace {

IMP g_terminate, g_open_url;

void note_terminate(id, SEL, id sender) {
  record().calls.push_back(sender == nil ? "terminate" : "terminate with a sender");
}

BOOL note_url(id, SEL, NSURL *url) {
  record().calls.push_back(std::string("open ") + [[url absoluteString] UTF8String]);
  return YES;
}

/// While one exists, terminate: and openURL: are only recorded.
class Stubs {
public:
  Stubs() {
    g_terminate = replace_method([NSApplication class], @selector(terminate:),
                                 reinterpret_cast<IMP>(note_terminate));
    g_open_url =
        replace_method([NSWorkspace class], @selector(openURL:), reinterpret_cast<IMP>(note_url));
  }
  ~Stubs() {
    replace_method([NSApplication class], @selector(terminate:), g_terminate);
    replace_method([NSWorkspace class], @selector(openURL:), g_open_url);
  }
};

/// The calls made when the item is chosen, in the menu or in the submenu of `submenu_of`.
Calls calls_of(Interface interface, NSString *title, NSString *submenu_of = nil) {
  filled(interface);
  record().calls.clear();
  NSMenu *menu = interface.menu;
  if (submenu_of) {
    menu = [item_titled(menu, submenu_of) submenu];
  }
  choose(item_titled(menu, title));
  return record().calls;
}

/// The titles of all items of the menu, as they are shown.
Calls titles(Interface interface) {
  Calls found;
  for (NSMenuItem *item : filled(interface)) {
    NSString *title = [item attributedTitle] ? [[item attributedTitle] string] : [item title];
    found.emplace_back([title UTF8String]);
  }
  return found;
}

std::string pasteboard_text() {
  NSString *text = [[NSPasteboard generalPasteboard] stringForType:NSPasteboardTypeString];
  return text ? [text UTF8String] : "";
}

} // namespace

TEST(Actions, WithoutAnyCallbackDoNothing) {
  Stubs stubs;
  const tdgui::GuiConfig all = full_config();
  tdgui::GuiConfig none;
  none.url = all.url;
  none.components = all.components;
  run_interface(none, [](Interface interface) {
    for (NSString *title in [NSArray arrayWithObjects:@"Start", @"Stop", @"Restart", nil]) {
      EXPECT_EQ(calls_of(interface, title, @"Hub"), Calls{});
    }
    for (NSString *title in
         [NSArray arrayWithObjects:@"Start All", @"Stop All", @"Restart All", nil]) {
      EXPECT_EQ(calls_of(interface, title, @"All Components"), Calls{});
    }
    EXPECT_EQ(calls_of(interface, @"Open Dashboard at Launch"), Calls{});
    EXPECT_EQ(calls_of(interface, @"Quit Tandrel"), Calls{"terminate"});
  });
}

TEST(Actions, NameTheComponentInUtf8) {
  tdgui::GuiConfig config = full_config();
  config.components = {{"höb ♫ 消", "Hub"}};
  config.is_running = [](const std::string &name) {
    record().calls.push_back("is_running " + name);
    return true;
  };
  run_interface(config, [](Interface interface) {
    filled(interface);
    EXPECT_EQ(record().calls, (Calls{"is_running höb ♫ 消", "is_running höb ♫ 消"}));
    EXPECT_EQ(calls_of(interface, @"Start", @"Hub"), Calls{"start höb ♫ 消"});
    EXPECT_EQ(calls_of(interface, @"Stop", @"Hub"), Calls{"stop höb ♫ 消"});
    EXPECT_EQ(calls_of(interface, @"Restart", @"Hub"), Calls{"restart höb ♫ 消"});
    EXPECT_EQ(calls_of(interface, @"Restart All", @"All Components"),
              (Calls{"stop höb ♫ 消", "start höb ♫ 消"}));
  });
}

TEST(Actions, KeepTheirEnabledFlagInTheMenuItself) {
  tdgui::GuiConfig without = full_config();
  without.is_running = nullptr;
  without.open_browser_pref = nullptr;
  for (const tdgui::GuiConfig &config : {full_config(), without}) {
    run_interface(config, [](Interface interface) {
      [interface.menu setAutoenablesItems:NO]; // does not change the flags
      for (NSMenuItem *item : filled(interface)) {
        const bool caption = [interface.menu indexOfItem:item] < 2;
        EXPECT_TRUE([item isSeparatorItem] || [item isEnabled] == !caption)
            << [[item title] UTF8String];
      }
      EXPECT_FALSE([interface.menu autoenablesItems]);
    });
  }
}

TEST(Actions, AreEnabledByTheirTargetWhateverTheFlagSays) {
  run_interface(full_config(), [](Interface interface) {
    EXPECT_FALSE([interface.controller respondsToSelector:@selector(validateMenuItem:)]);
    EXPECT_FALSE([interface.controller respondsToSelector:@selector(validateUserInterfaceItem:)]);
    record().running["receiver"] = false;
    filled(interface);
    NSMenu *hub = [item_titled(interface.menu, @"Hub") submenu];
    EXPECT_FALSE([item_titled(hub, @"Start") isEnabled]);
    [interface.menu update];
    EXPECT_FALSE([[interface.menu itemAtIndex:0] isEnabled]); // has no action
    EXPECT_FALSE([[interface.menu itemAtIndex:1] isEnabled]);
    for (NSString *label in [NSArray arrayWithObjects:@"Hub", @"Receiver", nil]) {
      NSMenu *submenu = [item_titled(interface.menu, label) submenu];
      [submenu update];
      for (NSInteger i = 0; i < [submenu numberOfItems]; ++i) {
        EXPECT_TRUE([[submenu itemAtIndex:i] isEnabled]) << i;
        [submenu performActionForItemAtIndex:i];
      }
    }
    const Calls expected = {"start hub",      "stop hub",      "restart hub",
                            "start receiver", "stop receiver", "restart receiver"};
    EXPECT_EQ(record().calls, expected);
  });
}

TEST(Actions, ToggleFlipsThePreferenceAndTheNextOpeningShowsIt) {
  run_interface(full_config(), [](Interface interface) {
    NSString *title = @"Open Dashboard at Launch";
    EXPECT_EQ(calls_of(interface, title), Calls{"open_browser on"});
    EXPECT_EQ([item_titled(interface.menu, title) state], 0); // unchanged while it is open
    EXPECT_EQ(calls_of(interface, title), Calls{"open_browser off"});
    EXPECT_EQ([item_titled(interface.menu, title) state], 1);
    filled(interface);
    EXPECT_EQ([item_titled(interface.menu, title) state], 0);
  });
}

TEST(Actions, OpenDashboardOpensTheAddress) {
  Stubs stubs;
  run_interface(full_config(), [](Interface interface) {
    EXPECT_EQ(calls_of(interface, @"Open Dashboard"), Calls{"open http://localhost:8080/"});
  });
}

TEST(Actions, QuitCallsQuitOnceAndThenTerminates) {
  Stubs stubs;
  tdgui::GuiConfig config = full_config();
  config.quit_fallback = [] { record().calls.emplace_back("fallback"); };
  run_interface(config, [](Interface interface) {
    EXPECT_EQ(calls_of(interface, @"Quit Tandrel"), (Calls{"quit", "terminate"}));
  });
  config.quit = nullptr;
  run_interface(config, [](Interface interface) {
    EXPECT_EQ(calls_of(interface, @"Quit Tandrel"), (Calls{"fallback", "terminate"}));
  });
  config.quit_fallback = nullptr;
  run_interface(config, [](Interface interface) {
    EXPECT_EQ(calls_of(interface, @"Quit Tandrel"), Calls{"terminate"});
  });
}

TEST(Actions, CopyPutsTheAddressOnThePasteboard) {
  run_interface(full_config(), [](Interface interface) {
    NSPasteboard *pasteboard = [NSPasteboard generalPasteboard];
    [pasteboard declareTypes:[NSArray arrayWithObject:NSPasteboardTypeTIFF] owner:nil];
    calls_of(interface, @"Copy Dashboard Address");
    EXPECT_EQ(pasteboard_text(), "http://localhost:8080/");
    EXPECT_EQ([[pasteboard types] count], 1u); // what was there before is gone
  });
}

TEST(Actions, TheAddressStaysAfterAPortChange) {
  Stubs stubs;
  run_interface(full_config(), [](Interface interface) {
    when_alert_runs([](NSWindow *panel) {
      [editable_fields(panel).at(0) setStringValue:@"9000"];
      click(panel, @"Apply");
    });
    EXPECT_EQ(calls_of(interface, @"Settings…"), Calls{"set_ports 9000 8081 ''"});
    when_alert_runs([](NSWindow *panel) {
      EXPECT_STREQ([[editable_fields(panel).at(0) stringValue] UTF8String], "9000");
      click(panel, @"Cancel");
    });
    EXPECT_EQ(calls_of(interface, @"Settings…"), Calls{});
    EXPECT_STREQ([[filled(interface)[1] title] UTF8String], "http://localhost:8080/");
    EXPECT_EQ(calls_of(interface, @"Open Dashboard"), Calls{"open http://localhost:8080/"});
    [[NSPasteboard generalPasteboard] declareTypes:[NSArray array] owner:nil];
    calls_of(interface, @"Copy Dashboard Address");
    EXPECT_EQ(pasteboard_text(), "http://localhost:8080/");
  });
}

TEST(Actions, AndTitlesAreThoseOfTheRecordAtTheStart) {
  Stubs stubs;
  tdgui::GuiConfig config = full_config();
  run_interface(config, [&](Interface interface) {
    const Calls before = titles(interface);
    config = tdgui::GuiConfig();
    config.url = "http://localhost:1/";
    config.status = "other";
    config.components = {{"other", "Other"}};
    config.quit_fallback = [] { record().calls.emplace_back("fallback"); };
    EXPECT_EQ(titles(interface), before);
    EXPECT_EQ(calls_of(interface, @"Open Dashboard"), Calls{"open http://localhost:8080/"});
    EXPECT_EQ(calls_of(interface, @"Start", @"Hub"), Calls{"start hub"});
    EXPECT_EQ(calls_of(interface, @"Stop", @"Receiver"), Calls{"stop receiver"});
    EXPECT_EQ(calls_of(interface, @"Restart", @"Sender"), Calls{"restart sender"});
    EXPECT_EQ(calls_of(interface, @"Open Dashboard at Launch"), Calls{"open_browser on"});
    EXPECT_EQ(calls_of(interface, @"Quit Tandrel"), (Calls{"quit", "terminate"}));
  });
}
