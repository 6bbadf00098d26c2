// A tray embeds the window in one of its own, which it moves and resizes. GNUstep computes a wrong
// frame from some of the events about that and does not correct it. So each such event is replaced
// by one with the frame that the X server reports.

#include "tray/status_window.h"

#include "tray/tray_dock.h"
#include "x11/window_device.h"
#include "x11/x_window.h"

namespace {

constexpr int icon_side = 22; // pixels; the usual icon size of trays
constexpr CGFloat screen_margin = 8;

NSPoint top_right_corner() {
  const NSRect screen = [[NSScreen mainScreen] frame];
  return NSMakePoint(NSMaxX(screen) - icon_side - screen_margin, NSMaxY(screen) - screen_margin);
}

bool is_move_or_resize(NSEvent *event) {
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
    [self setMinSize:[self frame].size]; // trays use the minimum size
    [self setExcludedFromWindowsMenu:YES];
    [self setContentView:button];
  }
  return self;
}

/// The icon takes clicks while a dialog is open.
- (BOOL)worksWhenModal {
  return YES;
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

- (NSEvent *)resizeEventFromServer {
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
  [super sendEvent:is_move_or_resize(event) ? [self resizeEventFromServer] : event];
}

@end
