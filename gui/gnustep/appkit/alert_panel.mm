// GNUstep's alert has no accessory view, its panel is dark grey, and the panel is hidden while
// another program is active. All three are changed right after the alert has made its panel.

#include "runtime/attached_object.h"
#include "runtime/replace_method.h"

#include <algorithm>

#import <AppKit/AppKit.h>

namespace {

constexpr CGFloat panel_margin = 9;   // GNUstep's own, between the panel's edge and its message
constexpr CGFloat accessory_gap = 12; // above and below the accessory

IMP g_make_panel;

/// GNUstep makes the panel with a fixed size: its minimum and maximum size have to change as well.
void resize(NSWindow *panel, NSSize content) {
  const NSRect frame = [panel frameRectForContentRect:{NSZeroPoint, content}];
  [panel setMinSize:frame.size];
  [panel setMaxSize:frame.size];
  [panel setContentSize:content];
}

bool has_fixed_edge(NSView *part) {
  return [part autoresizingMask] & (NSViewMinYMargin | NSViewMaxYMargin);
}

/// From the top, the panel has the icon and the title, which keep their distance from the top edge;
/// the message, which has no fixed edge; and the buttons, which keep their distance from the bottom
/// edge. The accessory is placed above the buttons.
void add_accessory(NSWindow *panel, NSView *accessory) {
  NSView *content = [panel contentView];
  const NSSize old_size = [content frame].size, added = [accessory frame].size;
  resize(panel, NSMakeSize(std::max(old_size.width, added.width + 2 * panel_margin),
                           old_size.height + added.height + accessory_gap));
  CGFloat buttons_top = 0;
  for (NSView *part in [content subviews]) {
    const NSRect frame = [part frame];
    if (!has_fixed_edge(part)) {
      [part
          setFrameOrigin:NSMakePoint(NSMinX(frame), NSMinY(frame) + added.height + accessory_gap)];
    }
    if ([part autoresizingMask] & NSViewMaxYMargin) {
      buttons_top = std::max(buttons_top, NSMaxY(frame));
    }
  }
  [accessory setFrameOrigin:NSMakePoint(panel_margin, buttons_top + accessory_gap)];
  [content addSubview:accessory];
  [panel recalculateKeyViewLoop]; // Tab reaches the accessory too
}

void make_panel(NSAlert *alert, SEL selector) {
  reinterpret_cast<void (*)(id, SEL)>(g_make_panel)(alert, selector);
  NSWindow *panel = [alert window];
  [panel setHidesOnDeactivate:NO]; // the modal loop would go on with nothing visible
  [panel setBackgroundColor:[NSColor colorWithCalibratedWhite:0.92 alpha:1]];
  if ([alert accessoryView]) {
    add_accessory(panel, [alert accessoryView]);
  }
}

} // namespace

@implementation NSAlert (TDMissing)

+ (void)load {
  g_make_panel = td::replace_method(objc_getClass("NSAlert"), @selector(_setupPanel),
                                    reinterpret_cast<IMP>(make_panel));
}

- (NSView *)accessoryView {
  return td::attached_object(self);
}

- (void)setAccessoryView:(NSView *)view {
  td::attach_object(self, view);
}

@end
