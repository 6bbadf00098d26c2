// Labels, and the number in a field.

#include <algorithm>
#include <climits>
#include <cstdlib>

#import <AppKit/AppKit.h>

/// A text of one line starts as far below the cell's top as a field's does, so that a label whose
/// top is at a field's top is on the field's baseline. Without a bezel GNUstep's cell starts at the
/// top.
@interface TDLabelCell : NSTextFieldCell
@end

@implementation TDLabelCell

- (NSRect)titleRectForBounds:(NSRect)bounds {
  if ([self wraps]) {
    return [super titleRectForBounds:bounds];
  }
  static NSTextFieldCell *field = [[NSTextFieldCell alloc] initTextCell:@""];
  [field setBezeled:YES];
  const CGFloat top = NSMinY([field titleRectForBounds:bounds]) - NSMinY(bounds);
  bounds.origin.y += top;
  bounds.size.height -= top;
  return bounds;
}

@end

@implementation NSTextField (TDMissing)

+ (instancetype)labelWithString:(NSString *)text {
  NSTextField *label = [[[self alloc] initWithFrame:NSZeroRect] autorelease];
  [label setCell:[[[TDLabelCell alloc] initTextCell:text] autorelease]];
  [[label cell] setWraps:NO];
  [label setEditable:NO];
  [label setSelectable:NO];
  [label setBezeled:NO];
  [label setDrawsBackground:NO];
  [label sizeToFit];
  return label;
}

/// A number beyond the type's range gives the nearest that is within it; GNUstep's wraps.
- (int)intValue {
  const long long number = std::strtoll([[self stringValue] UTF8String], nullptr, 10);
  return static_cast<int>(std::clamp<long long>(number, INT_MIN, INT_MAX));
}

@end
