// GNUstep has no -clearContents, and accepts a string only after its type has been declared; AppKit
// declares the type itself.

#include "runtime/replace_method.h"

#import <AppKit/AppKit.h>

namespace {

IMP g_set_string;

// The method's arguments. NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
BOOL set_string(NSPasteboard *pasteboard, SEL selector, NSString *string, NSString *type) {
  if (![[pasteboard types] containsObject:type]) {
    [pasteboard addTypes:[NSArray arrayWithObject:type] owner:nil];
  }
  return reinterpret_cast<BOOL (*)(id, SEL, id, id)>(g_set_string)(pasteboard, selector, string,
                                                                   type);
}

} // namespace

@implementation NSPasteboard (TDMissing)

+ (void)load {
  g_set_string = td::replace_method(objc_getClass("NSPasteboard"), @selector(setString:forType:),
                                    reinterpret_cast<IMP>(set_string));
}

- (NSInteger)clearContents {
  return [self declareTypes:[NSArray array] owner:nil];
}

@end
