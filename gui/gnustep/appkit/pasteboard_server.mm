// The pasteboard is kept by a server process, gpbs. At the first use GNUstep starts it as a child
// process, and a second server, gdnc, to be told when gpbs is ready. Here only gpbs is started,
// detached from this process, and it is ready before GNUstep looks for it.

#include "detached.h"
#include "process/temporary_folder.h"
#include "runtime/replace_method.h"

#import <AppKit/AppKit.h>
#import <GNUstepBase/NSTask+GNUstepBase.h>

namespace {

constexpr NSTimeInterval start_timeout = 5;
constexpr NSTimeInterval poll_interval = 0.02;

IMP g_connect;
NSConnection *g_server; // retained; invalid once gpbs has ended

bool find_server() {
  NSConnection *found = [NSConnection connectionWithRegisteredName:@"GNUstepGSPasteboardServer"
                                                              host:@""];
  if (![found isValid]) {
    return false;
  }
  [g_server release];
  g_server = [found retain];
  return true;
}

void start_server() {
  NSString *path = [NSTask launchPathForTool:@"gpbs"];
  const char *command = R"(TEMP=$1 exec "$2" --auto)"; // the server must use the same folder
  if (!path || !td::run_detached(command, {td::temporary_folder(), [path UTF8String]})) {
    return;
  }
  NSDate *deadline = [NSDate dateWithTimeIntervalSinceNow:start_timeout];
  while (!find_server() && [deadline timeIntervalSinceNow] > 0) {
    [NSThread sleepForTimeInterval:poll_interval];
  }
}

id pasteboard_server(id pasteboard_class, SEL selector) {
  if (![g_server isValid] && !find_server()) {
    start_server();
  }
  return reinterpret_cast<id (*)(id, SEL)>(g_connect)(pasteboard_class, selector);
}

} // namespace

@interface NSPasteboard (TDServer)
@end

@implementation NSPasteboard (TDServer)

+ (void)load {
  g_connect = td::replace_method(object_getClass(objc_getClass("NSPasteboard")), @selector(_pbs),
                                 reinterpret_cast<IMP>(pasteboard_server));
}

@end
