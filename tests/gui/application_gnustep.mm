#include "application.h"
#include "process/process_guards.h"
#include "runtime/replace_method.h"
#include "tray/status_icon.h"
#include "x11/window_device.h"
#include "x_events.h"

@interface NSStatusItem (TDIcon)
- (TDStatusIcon *)icon;
@end

namespace gui_test {

bool make_application() {
  td::make_application();
  return true;
}

IMP replace_method(Class cls, SEL selector, IMP imp) {
  return td::replace_method(cls, selector, imp);
}

void remove_icon(NSStatusItem *item) {
  [[item icon] close];
}

/// GNUstep looks at its event queue only after input from the X server.
void wake_loop() {
  for (NSWindow *window in [NSApp windows]) {
    if ([window isVisible]) {
      send_exposure(td::display_of(window), td::x_window_of(window));
    }
  }
}

NSBitmapImageRep *drawn(NSImage *image, NSInteger pixels_per_point) {
  const NSRect frame = NSMakeRect(0, 0, [image size].width * pixels_per_point,
                                  [image size].height * pixels_per_point);
  NSImage *canvas = [[[NSImage alloc] initWithSize:frame.size] autorelease];
  [canvas lockFocus];
  [[NSColor blackColor] set];
  NSRectFill(frame);
  NSAffineTransform *scale = [NSAffineTransform transform];
  [scale scaleBy:pixels_per_point];
  [scale concat];
  [[[image representations] objectAtIndex:0] draw];
  [[NSAffineTransform transform] set];
  NSBitmapImageRep *bitmap = [[[NSBitmapImageRep alloc] initWithFocusedViewRect:frame] autorelease];
  [canvas unlockFocus];
  return bitmap;
}

} // namespace gui_test
