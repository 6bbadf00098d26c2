// GNUstep requests the keyboard focus for a window right after it has requested that the window be
// shown. The X server refuses the focus while the window is not yet on the screen. If another
// window of the application loses the focus at that time, GNUstep considers the application
// inactive and drops the keys typed into the new window. So showing a window waits until it is on
// the screen.

#include "runtime/replace_method.h"
#include "x11/window_device.h"
#include "x11/x_window.h"

#import <AppKit/AppKit.h>

namespace {

using Order = void (*)(id, SEL, NSWindowOrderingMode, NSInteger);

IMP g_order_window;

void order_window(NSWindow *window, SEL selector, NSWindowOrderingMode place, NSInteger other) {
  const bool was_visible = [window isVisible];
  reinterpret_cast<Order>(g_order_window)(window, selector, place, other);
  if (!was_visible && [window isVisible]) {
    td::wait_until_viewable(td::display_of(window), td::x_window_of(window));
  }
}

} // namespace

@interface NSWindow (TDShownWindow)
@end

@implementation NSWindow (TDShownWindow)

+ (void)load {
  g_order_window = td::replace_method(objc_getClass("NSWindow"), @selector(orderWindow:relativeTo:),
                                      reinterpret_cast<IMP>(order_window));
}

@end
