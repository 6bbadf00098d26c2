// GNUstep's alert has no accessory view, and its panel has a title and a look of its own, does not
// let the window manager close it, and is hidden while another program is active. The alert is
// shown in another panel instead.

#include "appkit/dialog_window.h"
#include "runtime/attached_object.h"
#include "runtime/replace_method.h"

#include <algorithm>

namespace {

constexpr CGFloat margin = 20;
constexpr CGFloat icon_side = 48;
constexpr CGFloat text_left = margin + icon_side + 16;
constexpr CGFloat text_width = 340; // longer texts are wrapped
constexpr CGFloat text_gap = 8;     // between the two texts
constexpr CGFloat part_gap = 16;    // between texts, accessory and buttons
constexpr CGFloat button_gap = 10;
constexpr CGFloat button_height = 26;
constexpr CGFloat least_button_width = 80;

/// As wide as the text, but not wider than a column, and as high as it takes.
NSTextField *text_view(NSString *text, NSFont *font) {
  NSTextField *view = [NSTextField labelWithString:text];
  [view setFont:font];
  [[view cell] setWraps:YES];
  const NSSize column = NSMakeSize(text_width, CGFLOAT_MAX);
  const NSSize size =
      [[view attributedStringValue] boundingRectWithSize:column
                                                 options:NSStringDrawingUsesLineFragmentOrigin]
          .size;
  [view setFrameSize:NSMakeSize(ceil(size.width), ceil(size.height))];
  return view;
}

NSImageView *icon_view() {
  const NSRect frame = NSMakeRect(0, 0, icon_side, icon_side);
  NSImageView *view = [[[NSImageView alloc] initWithFrame:frame] autorelease];
  [view setImage:[NSApp applicationIconImage]];
  [[view cell] setRefusesFirstResponder:YES]; // Tab skips it
  return view;
}

/// The button that stands for closing the window: the one that Escape presses, else the last.
NSButton *closing_button(NSArray *buttons) {
  for (NSButton *button in buttons) {
    if ([[button keyEquivalent] isEqualToString:@"\033"]) {
      return button;
    }
  }
  return [buttons lastObject];
}

CGFloat button_width(NSButton *button) {
  return std::max(least_button_width, ceil([[button cell] cellSize].width) + 2 * button_gap);
}

CGFloat total_width(NSArray *buttons) {
  CGFloat width = -button_gap;
  for (NSButton *button in buttons) {
    width += button_width(button) + button_gap;
  }
  return width;
}

void add_at(NSView *content, NSView *part, CGFloat x, CGFloat y) {
  [part setFrameOrigin:NSMakePoint(x, y)];
  [content addSubview:part];
}

/// Places the buttons in a row from the right.
void add_buttons(NSView *content, NSArray *buttons, id target) {
  CGFloat right = NSWidth([content frame]) - margin;
  for (NSButton *button in buttons) {
    [button setImage:nil]; // GNUstep's mark of the default button
    [button setTarget:target];
    [button setAction:@selector(answer:)];
    [button setFrameSize:NSMakeSize(button_width(button), button_height)];
    add_at(content, button, right - NSWidth([button frame]), margin);
    right = NSMinX([button frame]) - button_gap;
  }
}

} // namespace

@interface TDAlertPanel : TDDialogWindow
- (instancetype)initWithAlert:(NSAlert *)alert;
@end

@implementation TDAlertPanel

/// The icon at the left; beside it, from the top, the two texts and the accessory; below, the
/// buttons.
- (instancetype)initWithAlert:(NSAlert *)alert {
  NSTextField *message =
      text_view([alert messageText], [NSFont boldSystemFontOfSize:[NSFont systemFontSize] + 1]);
  NSTextField *details = text_view([alert informativeText], [NSFont systemFontOfSize:0]);
  NSMutableArray *column = [NSMutableArray arrayWithObjects:message, details, nil];
  if ([alert accessoryView]) {
    [column addObject:[alert accessoryView]];
  }
  CGFloat width = 0, height = -part_gap;
  for (NSView *part in column) {
    width = std::max(width, NSWidth([part frame]));
    height += NSHeight([part frame]) + (part == message ? text_gap : part_gap);
  }
  width = std::max(text_left + width, margin + total_width([alert buttons])) + margin;
  height = std::max(height, icon_side) + part_gap + button_height + 2 * margin;
  if (!(self = [super initWithContentSize:NSMakeSize(width, height) title:[alert messageText]])) {
    return nil;
  }
  NSView *content = [self contentView];
  CGFloat y = height - margin;
  add_at(content, icon_view(), margin, y - icon_side);
  for (NSView *part in column) {
    y -= NSHeight([part frame]);
    add_at(content, part, text_left, y);
    y -= part == message ? text_gap : part_gap;
  }
  add_buttons(content, [alert buttons], self);
  [self setClosingButton:closing_button([alert buttons])];
  [self recalculateKeyViewLoop];
  [self setInitialFirstResponder:content]; // no control has the focus before Tab or a click
  return self;
}

- (void)answer:(NSButton *)sender {
  [NSApp stopModalWithCode:[sender tag]]; // counted from NSAlertFirstButtonReturn
}

@end

namespace {

NSInteger run_modal(NSAlert *alert, SEL /*selector*/) {
  TDAlertPanel *panel = [[TDAlertPanel alloc] initWithAlert:alert];
  // Newer versions of GNUstep request the keyboard before they show the window, which is refused.
  [panel orderFrontRegardless];
  const NSInteger answer = [NSApp runModalForWindow:panel];
  [panel orderOut:nil];
  [panel release];
  return answer;
}

} // namespace

@implementation NSAlert (TDMissing)

+ (void)load {
  td::replace_method(objc_getClass("NSAlert"), @selector(runModal),
                     reinterpret_cast<IMP>(run_modal));
}

- (NSView *)accessoryView {
  return td::attached_object(self);
}

- (void)setAccessoryView:(NSView *)view {
  td::attach_object(self, view);
}

@end
