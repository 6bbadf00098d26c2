/// What differs between AppKit and GNUstep: application_appkit.mm and application_gnustep.mm.
#pragma once

#import <AppKit/AppKit.h>

namespace gui_test {

/// Makes the shared application. Returns false, after a message, if none can be made.
bool make_application();

/// Makes `imp` the instance method of the class, which has or inherits one of that name; returns
/// the previous implementation.
IMP replace_method(Class cls, SEL selector, IMP imp);

/// The image on a black background, at a number of pixels per point.
NSBitmapImageRep *drawn(NSImage *image, NSInteger pixels_per_point);

} // namespace gui_test
