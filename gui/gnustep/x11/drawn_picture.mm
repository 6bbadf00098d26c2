// GNUstep's images keep no alpha of what is drawn into them. Alpha follows from drawing twice, on
// black and on white.

#include "x11/drawn_picture.h"

#include <algorithm>
#include <cmath>

#import <AppKit/AppKit.h>

namespace {

NSBitmapImageRep *drawn_on(NSColor *paper, NSSize size, const std::function<void()> &draw) {
  const NSRect frame = {NSZeroPoint, size};
  NSImage *canvas = [[[NSImage alloc] initWithSize:size] autorelease];
  [canvas lockFocus];
  [paper set];
  NSRectFill(frame);
  [NSGraphicsContext saveGraphicsState];
  draw();
  [NSGraphicsContext restoreGraphicsState];
  NSBitmapImageRep *bitmap = [[[NSBitmapImageRep alloc] initWithFocusedViewRect:frame] autorelease];
  [canvas unlockFocus];
  return bitmap;
}

std::uint32_t byte(CGFloat fraction) {
  return static_cast<std::uint32_t>(std::lround(std::clamp(fraction, 0.0, 1.0) * 255));
}

std::uint32_t pixel(NSColor *on_black, NSColor *on_white) {
  const CGFloat alpha = 1 - ([on_white greenComponent] - [on_black greenComponent]);
  return byte(alpha) << 24 | byte([on_black redComponent]) << 16 |
         byte([on_black greenComponent]) << 8 | byte([on_black blueComponent]);
}

} // namespace

namespace td {

Picture drawn_picture(int width, int height, const std::function<void()> &draw) {
  @autoreleasepool {
    const NSSize size = NSMakeSize(width, height);
    NSBitmapImageRep *black = drawn_on([NSColor blackColor], size, draw);
    NSBitmapImageRep *white = drawn_on([NSColor whiteColor], size, draw);
    Picture picture = filled_picture(width, height, 0);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        picture.at(x, y) = pixel([black colorAtX:x y:y], [white colorAtX:x y:y]);
      }
    }
    return picture;
  }
}

} // namespace td
