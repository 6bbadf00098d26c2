#include "application.h"

#include <cstdio>

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <objc/runtime.h>

namespace gui_test {

bool make_application() {
  const CFDictionaryRef session = CGSessionCopyCurrentDictionary();
  if (session == nullptr) {
    std::puts("No tests of the menu-bar interface: there is no graphic session.");
    return false;
  }
  CFRelease(session);
  [NSApplication sharedApplication];
  return true;
}

IMP replace_method(Class cls, SEL selector, IMP imp) {
  Method method = class_getInstanceMethod(cls, selector);
  IMP previous = method_getImplementation(method);
  class_replaceMethod(cls, selector, imp, method_getTypeEncoding(method));
  return previous;
}

NSBitmapImageRep *drawn(NSImage *image, NSInteger pixels_per_point) {
  const NSRect frame = NSMakeRect(0, 0, [image size].width * pixels_per_point,
                                  [image size].height * pixels_per_point);
  NSBitmapImageRep *bitmap =
      [[[NSBitmapImageRep alloc] initWithBitmapDataPlanes:NULL
                                               pixelsWide:static_cast<NSInteger>(frame.size.width)
                                               pixelsHigh:static_cast<NSInteger>(frame.size.height)
                                            bitsPerSample:8
                                          samplesPerPixel:4
                                                 hasAlpha:YES
                                                 isPlanar:NO
                                           colorSpaceName:NSCalibratedRGBColorSpace
                                              bytesPerRow:0
                                             bitsPerPixel:0] autorelease];
  // The colours of the icon are sRGB's: in another space they would be converted.
  bitmap = [bitmap bitmapImageRepByRetaggingWithColorSpace:[NSColorSpace sRGBColorSpace]];
  [NSGraphicsContext saveGraphicsState];
  [NSGraphicsContext
      setCurrentContext:[NSGraphicsContext graphicsContextWithBitmapImageRep:bitmap]];
  [[NSColor blackColor] set];
  NSRectFill(frame);
  [image drawInRect:frame];
  [NSGraphicsContext restoreGraphicsState];
  return bitmap;
}

} // namespace gui_test
