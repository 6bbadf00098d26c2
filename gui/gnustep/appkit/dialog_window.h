/// The window of a modal dialog, as desktops expect it.
#pragma once

#import <AppKit/AppKit.h>

/// Not resizable and not minimisable, with the application's icon in its title bar, and above the
/// application's other windows. Stays visible while another program is active.
@interface TDDialogWindow : NSPanel {
  NSButton *_closingButton;
}
- (instancetype)initWithContentSize:(NSSize)size title:(NSString *)title;

/// What closing the window and Escape do. The button must be in the window.
- (void)setClosingButton:(NSButton *)button;
@end

namespace td {

/// Brings the dialog that is open, if any, to the front, with the keyboard focus; returns whether
/// one is. Main thread only.
bool raise_dialog();

} // namespace td
