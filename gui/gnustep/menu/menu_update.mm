// GNUstep has the delegate update a menu again after every change of one of its items. For a
// delegate that rebuilds its menu that means thousands of rebuilds. AppKit has it updated once,
// when the menu opens: popup_menu.mm does that, and GNUstep's own updates are turned off.

#import <AppKit/AppKit.h>

@interface NSMenu (TDUpdate)
@end

@implementation NSMenu (TDUpdate)

- (void)_updateMenuWithDelegate {
}

@end
