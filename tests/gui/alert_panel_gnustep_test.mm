// The panel of an alert.

#include "interface.h"

#include <gtest/gtest.h>

using namespace gui_test;

TEST(AlertPanel, PartsNeitherOverlapNorLeaveThePanel) {
  run_interface(full_config(), [](Interface interface) {
    when_alert_runs([](NSWindow *panel) {
      NSArray *parts = [[panel contentView] subviews];
      for (NSView *one in parts) {
        EXPECT_TRUE(NSContainsRect([[panel contentView] bounds], NSIntegralRect([one frame])));
        for (NSView *other in parts) {
          EXPECT_TRUE(one == other || !NSIntersectsRect([one frame], [other frame]));
        }
      }
      click(panel, @"Cancel");
    });
    choose(item_titled((filled(interface), interface.menu), @"Settings…"));
  });
}
