#include "appkit/dialog_window.h"

#include "x11/dialog_hints.h"
#include "x11/window_device.h"
#include "x11/window_icon.h"

@implementation TDDialogWindow

- (instancetype)initWithContentSize:(NSSize)size title:(NSString *)title {
  if ((self = [super initWithContentRect:{NSZeroPoint, size}
                               styleMask:NSTitledWindowMask | NSClosableWindowMask
                                 backing:NSBackingStoreBuffered
                                   defer:NO])) {
    [self setReleasedWhenClosed:NO];
    [self setHidesOnDeactivate:NO]; // the modal loop would go on with nothing visible
    [self setLevel:NSModalPanelWindowLevel];
    [self setTitle:title];
    [self setBackgroundColor:[NSColor colorWithCalibratedWhite:0.98 alpha:1]];
    [self center];
    td::set_dialog_hints(td::display_of(self), td::x_window_of(self));
    td::set_window_icon(self, [NSApp applicationIconImage]);
  }
  return self;
}

- (void)setClosingButton:(NSButton *)button {
  _closingButton = button;
}

/// A click that arrives before GNUstep has noticed that the window has the focus would only make it
/// the key window.
- (void)sendEvent:(NSEvent *)event {
  if ([event type] == NSLeftMouseDown && ![self isKeyWindow]) {
    [NSApp activateIgnoringOtherApps:YES];
    [self makeKeyWindow];
  }
  [super sendEvent:event];
}

/// GNUstep draws again only what lies inside the fields' edges, but these show the focus too.
- (BOOL)makeFirstResponder:(NSResponder *)responder {
  const BOOL is_accepted = [super makeFirstResponder:responder];
  [[self contentView] setNeedsDisplay:YES];
  return is_accepted;
}

/// Sent when the window manager is to close the window.
- (void)performClose:(id)sender {
  [_closingButton performClick:sender];
}

/// Sent when the window manager has minimised the window. Some do so although the window does not
/// allow it; the dialog would be lost, since it is not in any list of windows.
- (void)performMiniaturize:(id)sender {
  td::activate_window(td::display_of(self), td::x_window_of(self));
}

@end

namespace td {

bool raise_dialog() {
  NSWindow *dialog = [NSApp modalWindow];
  if (!dialog) {
    return false;
  }
  activate_window(display_of(dialog), x_window_of(dialog));
  [dialog makeKeyAndOrderFront:nil];
  return true;
}

} // namespace td
