// Events of the X server are handled at once, even when Xlib has read them before the wait.

#include "interface.h"
#include "x11/window_device.h"
#include "x_events.h"

#include <gtest/gtest.h>

using namespace gui_test;

@interface RunLoopTestClick : NSObject
@end

@implementation RunLoopTestClick

/// Called by a timer: Xlib reads the press while it waits for a reply of the X server.
- (void)press:(NSTimer *)timer {
  NSWindow *window = [timer userInfo];
  send_press(td::display_of(window), td::x_window_of(window));
}

@end

TEST(RunLoop, DoesNotWaitForTheNextEventWithOneReadAlready) {
  run_interface(full_config(), [](Interface) {
    NSWindow *window = [[[NSWindow alloc] initWithContentRect:NSMakeRect(50, 50, 40, 40)
                                                    styleMask:NSBorderlessWindowMask
                                                      backing:NSBackingStoreBuffered
                                                        defer:NO] autorelease];
    [window setReleasedWhenClosed:NO];
    [window orderFrontRegardless];
    NSString *mode = NSConnectionReplyMode; // a mode in which no pulse wakes the loop
    while ([NSApp nextEventMatchingMask:NSAnyEventMask untilDate:nil inMode:mode dequeue:YES]) {}
    NSTimer *timer = [NSTimer timerWithTimeInterval:0
                                             target:[[[RunLoopTestClick alloc] init] autorelease]
                                           selector:@selector(press:)
                                           userInfo:window
                                            repeats:NO];
    [[NSRunLoop currentRunLoop] addTimer:timer forMode:mode];
    NSDate *deadline = [NSDate dateWithTimeIntervalSinceNow:10];
    NSEvent *event = [NSApp nextEventMatchingMask:NSLeftMouseDownMask
                                        untilDate:deadline
                                           inMode:mode
                                          dequeue:YES];
    EXPECT_TRUE(event != nil);
    EXPECT_GT([deadline timeIntervalSinceNow], 0) << "found only when the wait was over";
    [window close];
  });
}
