// GNUstep looks for a GNUstep application that opens the URL and, if there is none, blocks in an
// alert. The desktop's own command is run instead.

#include "detached.h"

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
