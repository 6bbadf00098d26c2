// Short calls of AppKit that GNUstep 0.29 lacks and that need nothing kept between calls.

#import <AppKit/AppKit.h>

@implementation NSApplication (TDMissing)

/// GNUstep has no Dock and no main menu of its own, and the icon window is already off (see
/// process_guards.mm): an accessory application is all this process can be.
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
  return policy == NSApplicationActivationPolicyAccessory;
}

@end

@interface NSColor (TDLabelColor)
@end

@implementation NSColor (TDLabelColor)

/// GNUstep's is as black as the text it is to stand behind.
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

@implementation NSTextField (TDMissing)

+ (instancetype)labelWithString:(NSString *)text {
  NSTextField *label = [[[self alloc] initWithFrame:NSZeroRect] autorelease];
  [label setStringValue:text];
  [label setEditable:NO];
  [label setSelectable:NO];
  [label setBezeled:NO];
  [label setDrawsBackground:NO];
  [label sizeToFit];
  return label;
}

@end
