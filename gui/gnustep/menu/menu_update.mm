// GNUstep asks a menu's delegate for its items again for every change made to an attached item,
// which for a delegate that rebuilds its menu means thousands of rebuilds. AppKit asks once, when
// the menu opens: the status item does that (status_item.mm), and GNUstep's own asking is off.

#import <AppKit/AppKit.h>

@interface NSMenu (TDUpdate)
@end

@implementation NSMenu (TDUpdate)

- (void)_updateMenuWithDelegate {
}

@end
