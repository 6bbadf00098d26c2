// Short AppKit methods that GNUstep 0.29 lacks and that keep no state between calls.

#import <AppKit/AppKit.h>

@implementation NSApplication (TDMissing)

/// There is nothing to change: this application has no main menu, and the icon window is already
/// off (process_guards.mm). No other policy is supported.
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
  return policy == NSApplicationActivationPolicyAccessory;
}

@end

@interface NSColor (TDLabelColor)
@end

@implementation NSColor (TDLabelColor)

/// GNUstep's is black, like ordinary text.
+ (NSColor *)secondaryLabelColor {
  return [NSColor colorWithCalibratedWhite:0.45 alpha:1];
}

@end

@implementation NSMenu (TDMissing)

- (void)removeAllItems {
  while ([self numberOfItems] > 0) {
    [self removeItemAtIndex:[self numberOfItems] - 1];
  }
}

@end
