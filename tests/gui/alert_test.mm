// tdgui::alert and the styles of the alerts.

#include "application.h"
#include "interface.h"

#include <gtest/gtest.h>

using namespace gui_test;

namespace {

IMP g_run_modal, g_activate;
std::vector<std::string> g_events; // in order: "activate", "alert <style> <button>..."

NSInteger note_alert(NSAlert *alert, SEL selector) {
  std::string event = "alert " + std::to_string([alert alertStyle]);
  for (NSButton *button in [alert buttons]) {
    event += std::string(" ") + [[button title] UTF8String];
  }
  g_events.push_back(event);
  return reinterpret_cast<NSInteger (*)(id, SEL)>(g_run_modal)(alert, selector);
}

/// An alert that gets the focus may activate the application itself; that is not recorded.
void note_activate(id application, SEL selector, BOOL flag) {
  if (![NSApp modalWindow]) {
    g_events.emplace_back(flag ? "activate" : "activate without ignoring other applications");
  }
  reinterpret_cast<void (*)(id, SEL, BOOL)>(g_activate)(application, selector, flag);
}

/// Records alerts and activations while it exists.
class Watch {
public:
  Watch() {
    g_events.clear();
    g_run_modal =
        replace_method([NSAlert class], @selector(runModal), reinterpret_cast<IMP>(note_alert));
    g_activate = replace_method([NSApplication class], @selector(activateIgnoringOtherApps:),
                                reinterpret_cast<IMP>(note_activate));
  }
  ~Watch() {
    replace_method([NSAlert class], @selector(runModal), g_run_modal);
    replace_method([NSApplication class], @selector(activateIgnoringOtherApps:), g_activate);
  }
};

} // namespace

TEST(Alert, IsCriticalWithOneButtonAndDoesNotActivate) {
  @autoreleasepool {
    full_config();
    [NSApplication sharedApplication];
    Watch watch;
    Pulse pulse;
    when_alert_runs([](NSWindow *panel) {
      EXPECT_TRUE(shows(panel, @"No höb"));
      EXPECT_TRUE(shows(panel, @"„Höb“ ist weg – ♫ 消えた."));
      click(panel, @"OK");
    });
    tdgui::alert("No höb", "„Höb“ ist weg – ♫ 消えた.");
    EXPECT_EQ(unanswered_alerts(), 0u);
    EXPECT_EQ(g_events, std::vector<std::string>{"alert 2 OK"});
  }
}

TEST(Alert, OfThePortsDialogActivatesFirstAndWarnsOnRefusal) {
  run_interface(full_config(), [](Interface interface) {
    Watch watch;
    record().ports_accepted = false;
    record().refusal = "no";
    record().http = 1;
    when_alert_runs([](NSWindow *panel) {
      for (NSTextField *field : editable_fields(panel)) {
        [field setStringValue:@"2"];
      }
      click(panel, @"Apply");
    });
    when_alert_runs([](NSWindow *panel) { click(panel, @"OK"); });
    filled(interface);
    choose(item_titled(interface.menu, @"Settings…"));
    const std::vector<std::string> expected = {"activate", "alert 0 Apply Cancel", "activate",
                                               "alert 0 OK"};
    EXPECT_EQ(g_events, expected);
  });
}
