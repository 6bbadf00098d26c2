// A window that comes on the screen is drawn there, not only before.

#include "interface.h"
#include "window_device.h"
#include "x_events.h"

#include <gtest/gtest.h>

using namespace gui_test;

/// Notes at each drawing whether its window is on the screen by then.
@interface TDWatchedView : NSView {
@public
  int _drawn;
  bool _lastOnScreen;
}
@end

@implementation TDWatchedView

- (void)drawRect:(NSRect)rect {
  NSWindow *window = [self window];
  ++_drawn;
  _lastOnScreen = is_on_screen(td::display_of(window), td::x_window_of(window));
}

@end

TEST(ShownWindow, IsDrawnOnceItIsOnTheScreen) {
  run_interface(full_config(), [](Interface) {
    NSWindow *window = [[[NSWindow alloc] initWithContentRect:NSMakeRect(50, 50, 40, 40)
                                                    styleMask:NSBorderlessWindowMask
                                                      backing:NSBackingStoreBuffered
                                                        defer:NO] autorelease];
    [window setReleasedWhenClosed:NO];
    TDWatchedView *view = [[[TDWatchedView alloc] initWithFrame:NSZeroRect] autorelease];
    [window setContentView:view];
    view->_drawn = 0;
    [window orderFrontRegardless];
    EXPECT_TRUE(view->_lastOnScreen);

    const int drawn = view->_drawn;
    [window orderFrontRegardless]; // there already
    EXPECT_EQ(view->_drawn, drawn);

    [window orderOut:nil];
    EXPECT_EQ(view->_drawn, drawn);
    [window close];
  });
}
