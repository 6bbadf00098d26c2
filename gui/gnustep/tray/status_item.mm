// GNUstep's status bar is a stub without status items. This status item has a button that is in no
// window: it holds the image and the tool tip for the icon (status_icon.mm).

#include "appkit/dialog_window.h"
#include "menu/popup_menu.h"
#include "tray/status_icon.h"

#import <AppKit/AppKit.h>

@interface TDStatusItem : NSStatusItem {
  NSStatusBarButton *_button;
  TDStatusIcon *_icon;
  NSMenu *_statusMenu;
}
- (TDStatusIcon *)icon;
@end

@interface TDStatusButton : NSStatusBarButton {
@public
  TDStatusItem *_owner; // owns this button
@private
  NSString *_tip;
}
@end

namespace {

/// Dark, like the panels of most desktops.
NSColor *backdrop_colour() {
  return [NSColor colorWithCalibratedWhite:0.13 alpha:1];
}

/// The status item's image, twice as large, on a tile. Autoreleased. The retain is needed because
/// the blocks runtime does not retain what a block captures; both images are kept until the
/// process ends.
NSImage *application_icon(NSImage *image) {
  [image retain];
  NSSize size = [image size];
  size = NSMakeSize(size.width * 2, size.height * 2);
  const NSRect tile = NSMakeRect(0, 0, 48, 48);
  const NSRect place = NSMakeRect(NSMidX(tile) - size.width / 2, NSMidY(tile) - size.height / 2,
                                  size.width, size.height);
  return [NSImage imageWithSize:tile.size
                        flipped:NO
                 drawingHandler:^BOOL(NSRect) {
                   [backdrop_colour() set];
                   [[NSBezierPath bezierPathWithRoundedRect:tile xRadius:9 yRadius:9] fill];
                   [image drawInRect:place
                            fromRect:NSZeroRect
                           operation:NSCompositeSourceOver
                            fraction:1.0];
                   return YES;
                 }];
}

} // namespace

@implementation TDStatusButton

/// Alerts show the application's icon, which on macOS comes from the bundle.
- (void)setImage:(NSImage *)image {
  [super setImage:image];
  [[_owner icon] setImage:image];
  if (image) {
    [NSApp setApplicationIconImage:application_icon(image)];
  }
}

- (void)dealloc {
  [_tip release];
  [super dealloc];
}

- (NSString *)toolTip {
  return _tip;
}

/// Not for GNUstep, which shows tool tips only in its own windows.
- (void)setToolTip:(NSString *)tip {
  [tip retain];
  [_tip release];
  _tip = tip;
  [[_owner icon] setToolTip:tip];
}

@end

@implementation TDStatusItem

- (instancetype)init {
  if ((self = [super init])) {
    TDStatusButton *button = [[TDStatusButton alloc] initWithFrame:NSZeroRect];
    button->_owner = self;
    _button = button;
    _icon = [[TDStatusIcon alloc] initWithTarget:self action:@selector(popUpMenuAt:)];
  }
  return self;
}

- (void)dealloc {
  [NSObject cancelPreviousPerformRequestsWithTarget:self];
  [_icon close];
  [_icon release];
  [_button release];
  [_statusMenu release];
  [super dealloc];
}

- (TDStatusIcon *)icon {
  return _icon;
}

- (NSStatusBarButton *)button {
  return _button;
}

- (NSMenu *)menu {
  return _statusMenu;
}

- (void)setMenu:(NSMenu *)menu {
  [menu retain];
  [_statusMenu release];
  _statusMenu = menu;
}

/// While a dialog is open, a click on the icon shows that instead.
- (void)popUpMenuAt:(NSValue *)frame {
  if (!td::raise_dialog() && _statusMenu) {
    td::pop_up_menu(_statusMenu, [frame rectValue]);
  }
}

@end

@interface NSStatusBar (TDStatusItem)
@end

@implementation NSStatusBar (TDStatusItem)

+ (NSStatusBar *)systemStatusBar {
  static NSStatusBar *bar = [[NSStatusBar alloc] init];
  return bar;
}

- (NSStatusItem *)statusItemWithLength:(CGFloat)length {
  return [[[TDStatusItem alloc] init] autorelease];
}

@end
