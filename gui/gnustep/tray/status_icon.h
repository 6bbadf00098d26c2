/// The status item's icon on the screen: a window that is not GNUstep's, with its events.
#pragma once

#import <AppKit/AppKit.h>

namespace td {
class PictureWindow;
class TrayIcon;
} // namespace td

@interface TDStatusIcon : NSObject {
  id _target; // not retained
  SEL _action;
  NSImage *_image;
  NSString *_toolTip;
  td::TrayIcon *_icon;
  td::PictureWindow *_shownToolTip;
}

/// Shows the icon: in the desktop's system tray or, while there is none, floating. When a mouse
/// button is pressed on the icon, `target` gets `action` with the icon's frame on the screen, an
/// NSValue. The target is not retained.
- (instancetype)initWithTarget:(id)target action:(SEL)action;

/// Takes the icon off the screen. The target gets nothing any more.
- (void)close;

- (void)setImage:(NSImage *)image;
- (void)setToolTip:(NSString *)text;

/// The icon's frame in screen coordinates.
- (NSRect)frameOnScreen;

@end
