// GNUstep's status bar is a placeholder without a status item. This one is a small window: embedded
// in the desktop's tray when there is one, else floating at the top right of the screen.

#include "popup_menu.h"
#include "window_device.h"
#include "x11.h"

#import <AppKit/AppKit.h>

@interface TDStatusItem : NSStatusItem {
  NSStatusBarButton *_button;
  NSWindow *_window;
  NSMenu *_statusMenu;
}
- (void)popUpMenu;
@end

@interface TDStatusButton : NSStatusBarButton {
@public
  TDStatusItem *_owner; // owns this button
@private
  NSString *_tip;
}
@end

namespace {

constexpr int icon_side = 22; // what trays commonly give an icon
constexpr CGFloat screen_margin = 8;

NSWindow *make_window(NSView *content) {
  NSWindow *window = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, icon_side, icon_side)
                                                 styleMask:NSBorderlessWindowMask
                                                   backing:NSBackingStoreBuffered
                                                     defer:NO];
  [window setReleasedWhenClosed:NO];
  [window setLevel:NSStatusWindowLevel];
  [window setMinSize:[window frame].size]; // trays go by the least size
  [window setExcludedFromWindowsMenu:YES];
  [window setContentView:content];
  return window;
}

void float_at_top_right(NSWindow *window) {
  const NSRect screen = [[NSScreen mainScreen] frame];
  [window setFrameTopLeftPoint:NSMakePoint(NSMaxX(screen) - icon_side - screen_margin,
                                           NSMaxY(screen) - screen_margin)];
}

/// Dark, as the bars of desktops mostly are.
NSColor *backdrop_colour() { return [NSColor colorWithCalibratedWhite:0.13 alpha:1]; }

/// The status item's image, twice as large, on a tile. Autoreleased. The blocks runtime does not
/// retain what a block captures, hence the retain; both images live as long as the process.
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

/// The window's frame as the X server has it; GNUstep's idea of it is wrong while it is embedded.
NSRect frame_on_screen(NSWindow *window) {
  const td::ScreenRect rect = td::screen_rect(td::display_of(window), td::x_window_of(window));
  const CGFloat bottom = NSMaxY([[NSScreen mainScreen] frame]) - rect.y - rect.height;
  return NSMakeRect(rect.x, bottom, rect.width, rect.height);
}

} // namespace

@implementation TDStatusButton

- (void)drawRect:(NSRect)rect {
  const NSRect bounds = [self bounds];
  [backdrop_colour() set];
  NSRectFill(bounds);
  NSImage *image = [self image];
  const NSSize size = [image size];
  [image drawInRect:NSMakeRect(floor(NSMidX(bounds) - size.width / 2),
                               floor(NSMidY(bounds) - size.height / 2), size.width, size.height)
           fromRect:NSZeroRect
          operation:NSCompositeSourceOver
           fraction:1.0];
}

/// Alerts show the application's icon, which on macOS comes with the bundle.
- (void)setImage:(NSImage *)image {
  [super setImage:image];
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

/// GNUstep's tool tip is a little too narrow for its text: a no-break space makes up for that.
- (void)setToolTip:(NSString *)tip {
  [tip retain];
  [_tip release];
  _tip = tip;
  [super setToolTip:[tip stringByAppendingString:@"\u00a0"]];
}

- (BOOL)acceptsFirstMouse:(NSEvent *)event {
  return YES;
}

- (void)mouseDown:(NSEvent *)event {
  [_owner popUpMenu];
}

- (void)rightMouseDown:(NSEvent *)event {
  [_owner popUpMenu];
}

@end

@implementation TDStatusItem

- (instancetype)init {
  if ((self = [super init])) {
    TDStatusButton *button =
        [[TDStatusButton alloc] initWithFrame:NSMakeRect(0, 0, icon_side, icon_side)];
    button->_owner = self;
    _button = button;
    _window = make_window(_button);
    if (!td::dock_in_tray(td::display_of(_window), td::x_window_of(_window), icon_side)) {
      float_at_top_right(_window);
    }
    [_window orderFrontRegardless];
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(followTray:)
                                                 name:NSWindowDidResizeNotification
                                               object:_window];
  }
  return self;
}

/// A tray embeds the window in one of no size and enlarges that; GNUstep may miss the second part.
- (void)followTray:(NSNotification *)notification {
  const NSRect frame = frame_on_screen(_window);
  if (!NSEqualSizes([_window frame].size, frame.size)) {
    [_window setFrame:frame display:YES];
  }
}

- (void)dealloc {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  [_window close];
  [_window release];
  [_button release];
  [_statusMenu release];
  [super dealloc];
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

- (void)popUpMenu {
  if (_statusMenu) {
    td::pop_up_menu(_statusMenu, frame_on_screen(_window));
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
