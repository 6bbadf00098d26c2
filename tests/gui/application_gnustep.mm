#include "application.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <objc/runtime.h>

namespace gui_test {
namespace {

id do_nothing(id /*object*/, SEL /*selector*/) {
  return nil;
}

/// GNUstep's NSTask has a handler of SIGCHLD that waits for any child of the process. When an
/// application starts, GNUstep uses it to start tools and a server that announces the application
/// to others and outlives the process.
void start_no_processes() {
  const IMP imp = reinterpret_cast<IMP>(do_nothing);
  Class task = object_getClass(objc_getClass("NSTask"));
  replace_method(task, @selector(initialize), imp);
  replace_method(task, @selector(launchedTaskWithLaunchPath:arguments:), imp);
  replace_method(objc_getClass("NSDistributedNotificationCenter"), @selector(_connect), imp);
}

} // namespace

bool make_application() {
  // GNUstep's display code installs its own handlers, which end the process.
  struct sigaction interrupt = {}, terminate = {};
  sigaction(SIGINT, nullptr, &interrupt);
  sigaction(SIGTERM, nullptr, &terminate);
  start_no_processes();
  @autoreleasepool {
    NSDictionary *no_icon_window = [NSDictionary dictionaryWithObject:@"YES"
                                                               forKey:@"GSSuppressAppIcon"];
    [[NSUserDefaults standardUserDefaults] registerDefaults:no_icon_window];
    [NSApplication sharedApplication];
  }
  sigaction(SIGINT, &interrupt, nullptr);
  sigaction(SIGTERM, &terminate, nullptr);
  return true;
}

/// Ends the process if there is nothing to replace, as in another version of GNUstep.
IMP replace_method(Class cls, SEL selector, IMP imp) {
  Method method = class_getInstanceMethod(cls, selector);
  if (!method) {
    std::fprintf(stderr, "This GNUstep has no -[%s %s].\n", class_getName(cls),
                 sel_getName(selector));
    std::abort();
  }
  IMP previous = method_getImplementation(method);
  // class_replaceMethod of GCC's runtime would replace an inherited method in the superclass.
  if (!class_addMethod(cls, selector, imp, method_getTypeEncoding(method))) {
    method_setImplementation(method, imp);
  }
  return previous;
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
