// GNUstep looks for an application of its own for a URL and blocks in an alert when it has none;
// the desktop's command for it is asked instead.

#include "process/detached.h"

#import <AppKit/AppKit.h>

@interface NSWorkspace (TDOpenURL)
@end

@implementation NSWorkspace (TDOpenURL)

- (BOOL)openURL:(NSURL *)url {
  if (url == nil) {
    return NO;
  }
  const char *command = R"(if command -v open; then open "$@"; else xdg-open "$@"; fi)";
  return td::run_detached(command, {[[url absoluteString] UTF8String]});
}

@end
