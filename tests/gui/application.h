/// What the tests need that differs between AppKit and GNUstep: application_appkit.mm and
/// application_gnustep.mm.
#pragma once

#import <AppKit/AppKit.h>

namespace gui_test {

/// Makes the shared application. Returns false where none can be made, after it has said why.
bool make_application();

/// Makes `imp` the instance method of the class, which has or inherits one of that name; returns
/// the implementation before.
IMP replace_method(Class cls, SEL selector, IMP imp);

/// The image on a black ground, with so many pixels in a row and in a column for each point.
NSBitmapImageRep *drawn(NSImage *image, NSInteger pixels_per_point);

} // namespace gui_test
