/// The window that contains the status item's button.
#pragma once

#import <AppKit/AppKit.h>

@interface TDStatusWindow : NSWindow
/// `button` fills the window and is resized with it.
- (instancetype)initWithButton:(NSView *)button;

/// Shows the window: embedded in the desktop's system tray if there is one, which may take up to
/// two seconds, else at the top right of the screen.
- (void)show;

/// The window's frame as the X server reports it, in screen coordinates.
- (NSRect)frameOnScreen;
@end
