// A Mac's colours of states and of secondary text. GNUstep's equal other colours, such as black, so
// a test could not distinguish them.

#import <AppKit/AppKit.h>

namespace {

NSColor *system_colour(int red, int green, int blue) {
  return [NSColor colorWithSRGBRed:red / 255.0 green:green / 255.0 blue:blue / 255.0 alpha:1];
}

} // namespace

@interface NSColor (TDSystemColours)
@end

@implementation NSColor (TDSystemColours)

+ (NSColor *)systemGreenColor {
  return system_colour(40, 205, 65);
}

+ (NSColor *)systemOrangeColor {
  return system_colour(255, 149, 0);
}

+ (NSColor *)systemRedColor {
  return system_colour(255, 59, 48);
}

+ (NSColor *)secondaryLabelColor {
  return system_colour(115, 115, 115);
}

@end
