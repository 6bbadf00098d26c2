// The status item and its icon.

#include "application.h"
#include "icon_shape.h"
#include "interface.h"

#include <cmath>

#include <gtest/gtest.h>

using namespace gui_test;

namespace {

constexpr NSInteger pixels_per_point = 32;

/// 1 inside a bar, 0 outside; -1 where the pixel touches the outline, because its colour depends on
/// the smoothing.
int expected_ink(CGFloat x, CGFloat y) {
  const double distance = distance_from_bars(x, y);
  const CGFloat half_diagonal = 0.75 / pixels_per_point;
  return distance > half_diagonal ? 0 : distance < -half_diagonal ? 1 : -1;
}

struct Difference {
  int ink = 0, paper = 0, wrong = 0;
};

bool near(CGFloat found, CGFloat wanted) {
  return std::fabs(found - wanted) < 0.01;
}

bool is_teal(NSColor *pixel) {
  return near([pixel redComponent], 0.3) && near([pixel greenComponent], 0.79) &&
         near([pixel blueComponent], 0.75);
}

Difference compare(NSBitmapImageRep *bitmap) {
  Difference result;
  for (NSInteger row = 0; row < icon_height * pixels_per_point; ++row) {
    for (NSInteger column = 0; column < icon_width * pixels_per_point; ++column) {
      const CGFloat x = (column + 0.5) / pixels_per_point,
                    y = icon_height - (row + 0.5) / pixels_per_point;
      const int expected = expected_ink(x, y);
      NSColor *pixel = [bitmap colorAtX:column y:row];
      result.ink += expected == 1;
      result.paper += expected == 0;
      result.wrong +=
          (expected == 1 && !is_teal(pixel)) || (expected == 0 && [pixel greenComponent] > 0.01);
    }
  }
  return result;
}

} // namespace

TEST(StatusItem, IsMadeAsAnAccessoryApplicationWithAMenu) {
  run_interface(full_config(), [](Interface interface) {
    EXPECT_EQ(interface.policy, NSApplicationActivationPolicyAccessory);
    EXPECT_EQ(interface.asked_length, NSVariableStatusItemLength);
    EXPECT_STREQ([[[interface.item button] toolTip] UTF8String], "Tandrel");
    EXPECT_TRUE([interface.controller isKindOfClass:NSClassFromString(@"TDStatusController")]);
    EXPECT_TRUE([interface.controller item] == interface.item);
    EXPECT_EQ([interface.menu numberOfItems], 0); // filled when it opens
    EXPECT_TRUE([NSApp delegate] == nil);
    EXPECT_TRUE([NSApp mainMenu] == nil);
  });
}

TEST(StatusItem, IsCompleteBeforeTheLoopRuns) {
  run_interface(full_config(), [](Interface interface) {
    const std::vector<std::string> expected = {"policy", "status item", "menu", "loop"};
    EXPECT_EQ(interface.steps, expected);
  });
}

TEST(StatusItem, HasTheOnlyWindow) {
  run_interface(full_config(), [](Interface interface) {
    for (NSWindow *window in [NSApp windows]) {
      EXPECT_TRUE(![window isVisible] || window == [[interface.item button] window]);
    }
  });
}

TEST(StatusItem, IconHasFiveTealBars) {
  run_interface(full_config(), [](Interface interface) {
    NSImage *image = [[interface.item button] image];
    EXPECT_EQ([image size].width, icon_width);
    EXPECT_EQ([image size].height, icon_height);
    for (int drawing = 0; drawing < 2; ++drawing) { // the image is drawn again each time
      const Difference difference = compare(drawn(image, pixels_per_point));
      EXPECT_GT(difference.ink, 80 * pixels_per_point * pixels_per_point);
      EXPECT_GT(difference.paper, 195 * pixels_per_point * pixels_per_point);
      EXPECT_EQ(difference.wrong, 0) << drawing;
    }
  });
}

TEST(StatusItem, RunReturnsWhenTheLoopIsStopped) {
  bool in_loop = false;
  run_interface(full_config(), [&](Interface) { in_loop = [NSApp isRunning]; });
  EXPECT_TRUE(in_loop);
  EXPECT_FALSE([NSApp isRunning]);
}
