// A tray puts the window into one of its own and moves and sizes that. What GNUstep makes of the
// events about it is wrong at times, and stays wrong, so each of them only leads to a look at the X
// server's account.

#include "tray/status_window.h"

#include "x11/window_device.h"
#include "x11/x_window.h"

namespace {

constexpr int icon_side = 22; // what trays commonly give an icon
constexpr CGFloat screen_margin = 8;

NSPoint top_right_corner() {
  const NSRect screen = [[NSScreen mainScreen] frame];
  return NSMakePoint(NSMaxX(screen) - icon_side - screen_margin, NSMaxY(screen) - screen_margin);
}

bool is_about_place(NSEvent *event) {
  return [event type] == NSAppKitDefined &&
         ([event subtype] == GSAppKitWindowMoved || [event subtype] == GSAppKitWindowResized);
}

} // namespace

@implementation TDStatusWindow

- (instancetype)initWithButton:(NSView *)button {
  if ((self = [super initWithContentRect:NSMakeRect(0, 0, icon_side, icon_side)
                               styleMask:NSBorderlessWindowMask
                                 backing:NSBackingStoreBuffered
                                   defer:NO])) {
    [self setReleasedWhenClosed:NO];
    [self setLevel:NSStatusWindowLevel];
    [self setMinSize:[self frame].size]; // trays go by the least size
    [self setExcludedFromWindowsMenu:YES];
    [self setContentView:button];
  }
  return self;
}

- (void)show {
  if (!td::dock_in_tray(td::display_of(self), td::x_window_of(self), icon_side)) {
    [self setFrameTopLeftPoint:top_right_corner()];
  }
  [self orderFrontRegardless];
}

- (NSRect)frameOnScreen {
  const td::ScreenRect rect = td::screen_rect(td::display_of(self), td::x_window_of(self));
  const CGFloat bottom = NSMaxY([[NSScreen mainScreen] frame]) - rect.y - rect.height;
  return NSMakeRect(rect.x, bottom, rect.width, rect.height);
}

- (NSEvent *)eventOfTruePlace {
  const NSRect frame = [self frameOnScreen];
  return [NSEvent otherEventWithType:NSAppKitDefined
                            location:frame.origin
                       modifierFlags:0
                           timestamp:0
                        windowNumber:[self windowNumber]
                             context:nil
                             subtype:GSAppKitWindowResized
                               data1:static_cast<NSInteger>(NSWidth(frame))
                               data2:static_cast<NSInteger>(NSHeight(frame))];
}

- (void)sendEvent:(NSEvent *)event {
  [super sendEvent:is_about_place(event) ? [self eventOfTruePlace] : event];
}

@end
