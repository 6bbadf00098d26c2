// What choosing an item does, with its callback present and absent.

#include "interface.h"
#include "replace_method.h"

#include <gtest/gtest.h>

using namespace gui_test;
using Calls = std::vector<std::string>;

namespace {

IMP g_terminate, g_open_url;

void note_terminate(id, SEL, id sender) {
  record().calls.push_back(sender == nil ? "terminate" : "terminate with a sender");
}

BOOL note_url(id, SEL, NSURL *url) {
  record().calls.push_back(std::string("open ") + [[url absoluteString] UTF8String]);
  return YES;
}

/// Ending the process and opening a browser are only noted, for as long as one of these lives.
class Stubs {
public:
  Stubs() {
    g_terminate = td::replace_method([NSApplication class], @selector(terminate:),
                                     reinterpret_cast<IMP>(note_terminate));
    g_open_url = td::replace_method([NSWorkspace class], @selector(openURL:),
                                    reinterpret_cast<IMP>(note_url));
  }
  ~Stubs() {
    td::replace_method([NSApplication class], @selector(terminate:), g_terminate);
    td::replace_method([NSWorkspace class], @selector(openURL:), g_open_url);
  }
};

/// The calls made by choosing the items of the path, one menu deeper each.
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

} // namespace

TEST(Actions, DriveTheComponentOfTheirRow) {
  run_interface(full_config(), [](Interface interface) {
    NSString *labels[] = {@"Hub", @"Receiver", @"Sender"};
    const Calls names = {"hub", "receiver", "sender"};
    for (std::size_t i = 0; i < names.size(); ++i) {
      EXPECT_EQ(calls_of(interface, @"Start", labels[i]), Calls{"start " + names[i]});
      EXPECT_EQ(calls_of(interface, @"Stop", labels[i]), Calls{"stop " + names[i]});
      EXPECT_EQ(calls_of(interface, @"Restart", labels[i]), Calls{"restart " + names[i]});
    }
  });
}

TEST(Actions, OnAllComponentsGoInOrder) {
  run_interface(full_config(), [](Interface interface) {
    NSString *all = @"All Components";
    EXPECT_EQ(calls_of(interface, @"Start All", all),
              (Calls{"start hub", "start receiver", "start sender"}));
    EXPECT_EQ(calls_of(interface, @"Stop All", all),
              (Calls{"stop sender", "stop receiver", "stop hub"}));
    EXPECT_EQ(calls_of(interface, @"Restart All", all),
              (Calls{"stop sender", "stop receiver", "stop hub", "start hub", "start receiver",
                     "start sender"}));
  });
}

TEST(Actions, RestartAllNeedsNoRestartCallback) {
  tdgui::GuiConfig config = full_config();
  config.restart = nullptr;
  config.stop = nullptr;
  run_interface(config, [](Interface interface) {
    EXPECT_EQ(calls_of(interface, @"Restart All", @"All Components"),
              (Calls{"start hub", "start receiver", "start sender"}));
  });
}

TEST(Actions, WithoutCallbacksDoNothing) {
  tdgui::GuiConfig config = full_config();
  config.start = config.stop = config.restart = nullptr;
  config.set_open_browser_pref = nullptr;
  run_interface(config, [](Interface interface) {
    for (NSString *title in [NSArray arrayWithObjects:@"Start", @"Stop", @"Restart", nil])
      EXPECT_EQ(calls_of(interface, title, @"Hub"), Calls{});
    for (NSString *title in
         [NSArray arrayWithObjects:@"Start All", @"Stop All", @"Restart All", nil])
      EXPECT_EQ(calls_of(interface, title, @"All Components"), Calls{});
    EXPECT_EQ(calls_of(interface, @"Open Dashboard at Launch"), Calls{});
  });
}

TEST(Actions, ToggleNeedsBothCallbacks) {
  tdgui::GuiConfig config = full_config();
  config.open_browser_pref = nullptr;
  run_interface(config, [](Interface interface) {
    EXPECT_EQ(calls_of(interface, @"Open Dashboard at Launch"), Calls{});
  });
}

TEST(Actions, ToggleFlipsThePreferenceAndTheNextOpeningShowsIt) {
  run_interface(full_config(), [](Interface interface) {
    NSString *title = @"Open Dashboard at Launch";
    EXPECT_EQ(calls_of(interface, title), Calls{"open_browser on"});
    EXPECT_EQ([item_titled(interface.menu, title) state], 0); // not touched while it is open
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
    [pasteboard declareTypes:[NSArray arrayWithObject:NSTIFFPboardType] owner:nil];
    calls_of(interface, @"Copy Dashboard Address");
    EXPECT_STREQ([[pasteboard stringForType:NSPasteboardTypeString] UTF8String],
                 "http://localhost:8080/");
    EXPECT_EQ([[pasteboard types] count], 1u); // what was there before is gone
  });
}

TEST(Actions, TheAddressStaysAfterAPortChange) {
  Stubs stubs;
  run_interface(full_config(), [](Interface interface) {
    record().http = 9000;
    EXPECT_STREQ([[filled(interface)[1] title] UTF8String], "http://localhost:8080/");
    EXPECT_EQ(calls_of(interface, @"Open Dashboard"), Calls{"open http://localhost:8080/"});
  });
}
