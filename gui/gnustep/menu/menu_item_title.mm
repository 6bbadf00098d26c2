// GNUstep's menu item keeps only the text of an attributed title, and its getter returns nil.

#include "runtime/attached_object.h"

#import <AppKit/AppKit.h>

@interface NSMenuItem (TDAttributedTitle)
@end

@implementation NSMenuItem (TDAttributedTitle)

- (void)setAttributedTitle:(NSAttributedString *)title {
  td::attach_object(self, [[title copy] autorelease]);
  [[self menu] itemChanged:self];
}

- (NSAttributedString *)attributedTitle {
  return td::attached_object(self);
}

@end
