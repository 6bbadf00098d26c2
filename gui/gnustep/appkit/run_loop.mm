// While Xlib waits for a reply of the X server it may also read events. GNUstep moves these to the
// application's queue when the run loop is about to wait, but the run loop then waits nevertheless:
// a click or an exposure stays in the queue until more input arrives. Here events moved to the
// queue count as input, which ends the wait.

#include "runtime/replace_method.h"

#import <Foundation/Foundation.h>

namespace {

using ShouldBlock = BOOL (*)(id, SEL, BOOL *);
using Poll = BOOL (*)(id, SEL, int, NSArray *);

IMP g_should_block, g_poll;
thread_local bool t_has_input; // for the innermost poll

BOOL should_block(id watcher, SEL selector, BOOL *trigger) {
  const BOOL blocks = reinterpret_cast<ShouldBlock>(g_should_block)(watcher, selector, trigger);
  t_has_input = t_has_input || (!blocks && *trigger);
  return blocks;
}

BOOL poll(id context, SEL selector, int milliseconds, NSArray *contexts) {
  const bool outer_has_input = t_has_input;
  t_has_input = false;
  const BOOL ready = reinterpret_cast<Poll>(g_poll)(context, selector, milliseconds, contexts);
  const bool has_input = t_has_input;
  t_has_input = outer_has_input;
  return ready || has_input;
}

} // namespace

@interface NSRunLoop (TDInput)
@end

@implementation NSRunLoop (TDInput)

+ (void)load {
  g_should_block =
      td::replace_method(objc_getClass("GSRunLoopWatcher"), @selector(runLoopShouldBlock:),
                         reinterpret_cast<IMP>(should_block));
  g_poll = td::replace_method(objc_getClass("GSRunLoopCtxt"), @selector(pollUntil:within:),
                              reinterpret_cast<IMP>(poll));
}

@end
