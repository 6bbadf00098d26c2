// GNUstep's alert has no accessory view, and its own panel no place for one. This alert runs a
// panel with everything that the tests read, fill in and press, one part below the other.

#import <AppKit/AppKit.h>

/// The class of every NSAlert.
@interface TDAlert : NSAlert {
  NSView *_accessoryView;
}
- (void)answer:(NSButton *)button;
@end

namespace {

constexpr CGFloat panel_width = 400, margin = 20, part_height = 40;

/// Adds the part below the existing ones.
void add_part(NSView *content, NSView *part) {
  const CGFloat top = [[content subviews] count] > 0
                          ? NSMinY([[[content subviews] lastObject] frame])
                          : NSMaxY([content bounds]);
  [part setFrameOrigin:NSMakePoint(margin, top - margin - NSHeight([part frame]))];
  [content addSubview:part];
}

void add_text(NSView *content, NSString *text) {
  NSTextField *field = [NSTextField labelWithString:text];
  [field setFrameSize:NSMakeSize(panel_width - 2 * margin, part_height)];
  add_part(content, field);
}

NSPanel *make_panel(TDAlert *alert) {
  NSView *accessory = [alert accessoryView];
  const CGFloat height = NSHeight([accessory frame]) + 2 * margin +
                         (part_height + margin) * (2 + [[alert buttons] count]);
  NSPanel *panel = [[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, panel_width, height)
                                              styleMask:NSTitledWindowMask
                                                backing:NSBackingStoreBuffered
                                                  defer:NO];
  NSView *content = [panel contentView];
  add_text(content, [alert messageText]);
  add_text(content, [alert informativeText]);
  if (accessory) {
    add_part(content, accessory);
  }
  for (NSButton *button in [alert buttons]) {
    [button setTarget:alert];
    [button setAction:@selector(answer:)];
    [button setFrameSize:NSMakeSize(panel_width / 2, part_height)];
    add_part(content, button);
  }
  [panel recalculateKeyViewLoop];
  [panel setInitialFirstResponder:content]; // no control has the focus before Tab or a click
  return panel;
}

} // namespace

@implementation TDAlert

- (void)dealloc {
  [_accessoryView release];
  [super dealloc];
}

- (NSView *)accessoryView {
  return _accessoryView;
}

- (void)setAccessoryView:(NSView *)view {
  [view retain];
  [_accessoryView release];
  _accessoryView = view;
}

- (void)answer:(NSButton *)button {
  [NSApp stopModalWithCode:[button tag]]; // counted from NSAlertFirstButtonReturn
}

@end

@interface NSAlert (TDPanel)
@end

@implementation NSAlert (TDPanel)

+ (id)allocWithZone:(NSZone *)zone {
  return NSAllocateObject(self == [NSAlert class] ? [TDAlert class] : self, 0, zone);
}

- (NSInteger)runModal {
  NSPanel *panel = make_panel(static_cast<TDAlert *>(self));
  // Newer versions of GNUstep request the keyboard before they show the window, which is refused.
  [panel orderFrontRegardless];
  const NSInteger answer = [NSApp runModalForWindow:panel];
  [panel orderOut:nil];
  [panel release];
  return answer;
}

@end
