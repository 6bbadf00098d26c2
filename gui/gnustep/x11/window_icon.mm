#include "x11/window_icon.h"

#include "x11/dialog_hints.h"
#include "x11/window_device.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

constexpr int sides[] = {16, 24, 32, 48}; // pixels; desktops take the one that fits best

NSBitmapImageRep *drawn_on(NSColor *paper, NSImage *image, int side) {
  const NSRect frame = NSMakeRect(0, 0, side, side);
  NSImage *canvas = [[[NSImage alloc] initWithSize:frame.size] autorelease];
  [canvas lockFocus];
  [paper set];
  NSRectFill(frame);
  [image drawInRect:frame fromRect:NSZeroRect operation:NSCompositeSourceOver fraction:1.0];
  NSBitmapImageRep *bitmap = [[[NSBitmapImageRep alloc] initWithFocusedViewRect:frame] autorelease];
  [canvas unlockFocus];
  return bitmap;
}

unsigned long byte(CGFloat fraction) {
  return static_cast<unsigned long>(std::lround(std::clamp(fraction, 0.0, 1.0) * 255));
}

/// GNUstep's images keep no alpha of what is drawn into them, but it follows from the colours on
/// black and on white.
unsigned long argb(NSColor *on_black, NSColor *on_white) {
  const CGFloat alpha = 1 - ([on_white greenComponent] - [on_black greenComponent]);
  if (alpha <= 0) {
    return 0;
  }
  return byte(alpha) << 24 | byte([on_black redComponent] / alpha) << 16 |
         byte([on_black greenComponent] / alpha) << 8 | byte([on_black blueComponent] / alpha);
}

/// Adds the image's width, height and pixels.
void append(std::vector<unsigned long> &icons, NSImage *image, int side) {
  NSBitmapImageRep *black = drawn_on([NSColor blackColor], image, side);
  NSBitmapImageRep *white = drawn_on([NSColor whiteColor], image, side);
  icons.insert(icons.end(), 2, static_cast<unsigned long>(side));
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      icons.push_back(argb([black colorAtX:x y:y], [white colorAtX:x y:y]));
    }
  }
}

} // namespace

namespace td {

void set_window_icon(NSWindow *window, NSImage *image) {
  @autoreleasepool {
    std::vector<unsigned long> icons;
    for (int side : sides) {
      append(icons, image, side);
    }
    set_icons(display_of(window), x_window_of(window), icons);
  }
}

} // namespace td
