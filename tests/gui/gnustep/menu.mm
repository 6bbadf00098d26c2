// Menus: all items removed at once, attributed titles, and no updates of a menu that is not opened.

#import <AppKit/AppKit.h>

/// The class of every NSMenuItem but a separator: GNUstep's keeps only the text of an attributed
/// title, and its getter returns nil.
@interface TDMenuItem : NSMenuItem {
  NSAttributedString *_attributedTitle;
}
@end

@implementation TDMenuItem

- (void)dealloc {
  [_attributedTitle release];
  [super dealloc];
}

- (NSAttributedString *)attributedTitle {
  return _attributedTitle;
}

- (void)setAttributedTitle:(NSAttributedString *)title {
  NSAttributedString *copied = [title copy];
  [_attributedTitle release];
  _attributedTitle = copied;
}

@end

@interface NSMenuItem (TDClass)
@end

@implementation NSMenuItem (TDClass)

+ (id)allocWithZone:(NSZone *)zone {
  return NSAllocateObject(self == [NSMenuItem class] ? [TDMenuItem class] : self, 0, zone);
}

@end

@implementation NSMenu (TDMissing)

- (void)removeAllItems {
  while ([self numberOfItems] > 0) {
    [self removeItemAtIndex:[self numberOfItems] - 1];
  }
}

@end

@interface NSMenu (TDUpdate)
@end

@implementation NSMenu (TDUpdate)

/// GNUstep lets the delegate update a menu after every change of an item: thousands of times if it
/// rebuilds the menu. AppKit does so when the menu opens.
- (void)_updateMenuWithDelegate {
}

@end
