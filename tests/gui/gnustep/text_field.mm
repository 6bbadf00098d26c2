// Labels, which GNUstep lacks, and the number in a field.

#include <algorithm>
#include <climits>
#include <cstdlib>

#import <AppKit/AppKit.h>

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

@interface NSTextField (TDRange)
@end

@implementation NSTextField (TDRange)

/// A number beyond the type's range gives the nearest that is within it; GNUstep's wraps.
- (int)intValue {
  const long long number = std::strtoll([[self stringValue] UTF8String], nullptr, 10);
  return static_cast<int>(std::clamp<long long>(number, INT_MIN, INT_MAX));
}

@end
