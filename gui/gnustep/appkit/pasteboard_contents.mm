// GNUstep has no -clearContents, and accepts a string only after its type has been declared; AppKit
// declares the type itself. What was copied is lost when the last GNUstep application ends, unless
// the desktop's clipboard manager takes it over before.

#include "runtime/replace_method.h"
#include "x11/clipboard.h"

#import <AppKit/AppKit.h>

namespace {

IMP g_set_string, g_terminate;
NSString *g_copied; // by this process, last; retained

// The method's arguments. NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
BOOL set_string(NSPasteboard *pasteboard, SEL selector, NSString *string, NSString *type) {
  if (![[pasteboard types] containsObject:type]) {
    [pasteboard addTypes:[NSArray arrayWithObject:type] owner:nil];
  }
  const BOOL is_set =
      reinterpret_cast<BOOL (*)(id, SEL, id, id)>(g_set_string)(pasteboard, selector, string, type);
  if ([[pasteboard name] isEqualToString:NSGeneralPboard]) {
    [g_copied release];
    g_copied = [string copy];
    // The server overlooks requests of other programs that arrive while it takes the clipboard
    // over, until another request arrives: this one.
    td::is_on_clipboard([g_copied UTF8String]);
  }
  return is_set;
}

void terminate(NSApplication *application, SEL selector, id sender) {
  if (g_copied) {
    td::hand_over_clipboard([g_copied UTF8String]);
  }
  reinterpret_cast<void (*)(id, SEL, id)>(g_terminate)(application, selector, sender);
}

} // namespace

@implementation NSPasteboard (TDMissing)

+ (void)load {
  g_set_string = td::replace_method(objc_getClass("NSPasteboard"), @selector(setString:forType:),
                                    reinterpret_cast<IMP>(set_string));
  g_terminate = td::replace_method(objc_getClass("NSApplication"), @selector(terminate:),
                                   reinterpret_cast<IMP>(terminate));
}

- (NSInteger)clearContents {
  return [self declareTypes:[NSArray array] owner:nil];
}

@end
