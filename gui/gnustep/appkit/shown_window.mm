// GNUstep asks for the keyboard for a window as soon as it has asked for the window to be shown.
// While the window manager has not done so the X server refuses, and should the loss of another
// window's focus be heard of in between, the application takes itself for inactive and from then on
// drops the keys typed into the window. So showing a window lasts until it is there.

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
