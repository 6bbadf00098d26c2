/// The window that the status item is drawn in.
#pragma once

#import <AppKit/AppKit.h>

@interface TDStatusWindow : NSWindow
/// `button` is the window's whole content and follows its size.
- (instancetype)initWithButton:(NSView *)button;

/// Puts the window on the screen: embedded in the desktop's tray when there is one, which waits for
/// the tray and may take two seconds; else floating at the top right.
- (void)show;

/// Where the window is by the X server's account.
- (NSRect)frameOnScreen;
@end
