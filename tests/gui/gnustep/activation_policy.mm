// GNUstep's applications have no activation policy.

#import <AppKit/AppKit.h>

@implementation NSApplication (TDMissing)

- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
  return YES;
}

@end
