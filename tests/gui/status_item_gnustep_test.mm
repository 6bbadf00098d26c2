// The status item's image and window.

#include "interface.h"

#include <gtest/gtest.h>

using namespace gui_test;

TEST(StatusItem, IconIsNotFlipped) {
  run_interface(full_config(), [](Interface interface) {
    EXPECT_FALSE([[[interface.item button] image] isFlipped]);
  });
}

TEST(StatusItem, IsDrawnOnTheScreen) {
  run_interface(full_config(), [](Interface interface) {
    NSWindow *window = [[interface.item button] window];
    EXPECT_TRUE([window isVisible]);
    NSView *button = [interface.item button];
    EXPECT_TRUE(NSEqualRects([button frame], [[window contentView] frame]));
  });
}

TEST(StatusItem, IgnoresTheSizeInAnEvent) {
  run_interface(full_config(), [](Interface interface) {
    NSView *button = [interface.item button];
    NSWindow *window = [button window];
    const NSRect frame = [window frame];
    for (const short subtype : {GSAppKitWindowResized, GSAppKitWindowMoved}) {
      [window sendEvent:[NSEvent otherEventWithType:NSAppKitDefined
                                           location:NSMakePoint(460, 26)
                                      modifierFlags:0
                                          timestamp:0
                                       windowNumber:[window windowNumber]
                                            context:nil
                                            subtype:subtype
                                              data1:1
                                              data2:1]];
      EXPECT_TRUE(NSEqualRects([window frame], frame)) << subtype;
      EXPECT_TRUE(NSEqualSizes([button frame].size, frame.size)) << subtype;
    }
  });
}
