// GNUstep draws a window as it asks for it to be shown. The window manager may not have done so by
// then, and the exposure that follows is now and then lost: the window stays blank until something
// changes in it. So a window is drawn once more when it is really there.

#include "replace_method.h"
#include "window_device.h"
#include "x11.h"

#import <AppKit/AppKit.h>

namespace {

IMP g_order_window;

void order_window(NSWindow *window, SEL selector, NSWindowOrderingMode place, NSInteger other) {
  const bool was_visible = [window isVisible];
  reinterpret_cast<void (*)(id, SEL, NSWindowOrderingMode, NSInteger)>(g_order_window)(
      window, selector, place, other);
  if (!was_visible && [window isVisible]) {
    td::wait_until_viewable(td::display_of(window), td::x_window_of(window));
    [window display];
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
