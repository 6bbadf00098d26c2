// GNUstep's status bar is a stub without status items. This status item keeps what it is given and
// shows nothing.

#import <AppKit/AppKit.h>

@interface TDStatusItem : NSStatusItem {
  NSStatusBarButton *_button;
  NSMenu *_statusMenu;
}
@end

@implementation TDStatusItem

- (instancetype)init {
  if ((self = [super init])) {
    _button = [[NSStatusBarButton alloc] initWithFrame:NSZeroRect];
  }
  return self;
}

- (void)dealloc {
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

- (void)removeStatusItem:(NSStatusItem *)item {
}

@end
