#include "interface.h"

#include "application.h"

#include <chrono>
#include <deque>

#include <gtest/gtest.h>

namespace gui_test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds deadline(10);

Interface g_interface;
std::function<void(Interface)> g_body;
std::deque<std::function<void(NSWindow *)>> g_answers;
int g_alerts;                    // how many have been run
Clock::time_point g_alert_began; // the last one
int g_answered_alerts;           // the value of g_alerts when the last one was answered
IMP g_make_status_item, g_set_policy, g_run_modal, g_set_menu, g_run_application;

/// When the menu is set, the icon must be complete, and so must the menu, except for its items.
void set_menu(NSStatusItem *item, SEL selector, NSMenu *menu) {
  const bool finished_icon = [[item button] image] && [[item button] toolTip];
  const auto controller = static_cast<id<GuiTestController>>([menu delegate]);
  const bool finished_menu = [controller item] == item && [menu numberOfItems] == 0;
  g_interface.steps.emplace_back(finished_icon && finished_menu ? "menu" : "menu too early");
  reinterpret_cast<void (*)(id, SEL, id)>(g_set_menu)(item, selector, menu);
}

NSStatusItem *make_status_item(id bar, SEL selector, CGFloat length) {
  g_interface.steps.emplace_back("status item");
  g_interface.asked_length = length;
  g_interface.item = reinterpret_cast<NSStatusItem *(*)(id, SEL, CGFloat)>(g_make_status_item)(
      bar, selector, length);
  if (!g_set_menu) { // the item's class need not be NSStatusItem itself
    g_set_menu = replace_method([g_interface.item class], @selector(setMenu:),
                                reinterpret_cast<IMP>(set_menu));
  }
  return g_interface.item;
}

BOOL set_policy(id application, SEL selector, NSApplicationActivationPolicy policy) {
  g_interface.steps.emplace_back("policy");
  g_interface.policy = policy;
  return reinterpret_cast<BOOL (*)(id, SEL, NSApplicationActivationPolicy)>(g_set_policy)(
      application, selector, policy);
}

void run_application(id application, SEL selector) {
  g_interface.steps.emplace_back("loop");
  reinterpret_cast<void (*)(id, SEL)>(g_run_application)(application, selector);
}

NSInteger count_alert(id alert, SEL selector) {
  ++g_alerts;
  g_alert_began = Clock::now();
  return reinterpret_cast<NSInteger (*)(id, SEL)>(g_run_modal)(alert, selector);
}

void watch_calls() {
  static bool done = false;
  if (done) {
    return;
  }
  done = true;
  g_make_status_item = replace_method([NSStatusBar class], @selector(statusItemWithLength:),
                                      reinterpret_cast<IMP>(make_status_item));
  g_set_policy = replace_method([NSApplication class], @selector(setActivationPolicy:),
                                reinterpret_cast<IMP>(set_policy));
  g_run_application =
      replace_method([NSApplication class], @selector(run), reinterpret_cast<IMP>(run_application));
  g_run_modal =
      replace_method([NSAlert class], @selector(runModal), reinterpret_cast<IMP>(count_alert));
}

void post_event() {
  [NSApp postEvent:[NSEvent otherEventWithType:NSEventTypeApplicationDefined
                                      location:NSZeroPoint
                                 modifierFlags:0
                                     timestamp:0
                                  windowNumber:0
                                       context:nil
                                       subtype:0
                                         data1:0
                                         data2:0]
           atStart:NO];
}

} // namespace
} // namespace gui_test

@interface GuiTestDriver : NSObject
@end

@implementation GuiTestDriver

- (void)runBody:(NSTimer *)timer {
  using namespace gui_test;
  g_interface.menu = [g_interface.item menu];
  g_interface.controller = static_cast<id<GuiTestController>>([g_interface.menu delegate]);
  g_body(g_interface);
  [NSApp stop:nil];
}

- (void)pulse:(NSTimer *)timer {
  using namespace gui_test;
  NSWindow *panel = [NSApp modalWindow];
  if (panel && g_answered_alerts != g_alerts && !g_answers.empty()) {
    g_answered_alerts = g_alerts; // it stays the modal window until the loop handles the click
    const auto answer = g_answers.front();
    g_answers.pop_front();
    answer(panel);
  } else if (panel && Clock::now() - g_alert_began > deadline) {
    ADD_FAILURE() << "the alert is still open";
    [NSApp stopModalWithCode:NSModalResponseAbort];
  }
  post_event();
}

@end

namespace gui_test {

Pulse::Pulse() {
  GuiTestDriver *driver = [[[GuiTestDriver alloc] init] autorelease];
  timer_ = [[NSTimer timerWithTimeInterval:0.01
                                    target:driver
                                  selector:@selector(pulse:)
                                  userInfo:nil
                                   repeats:YES] retain];
  for (NSString *mode in [NSArray arrayWithObjects:NSDefaultRunLoopMode, NSModalPanelRunLoopMode,
                                                   NSEventTrackingRunLoopMode, nil]) {
    [[NSRunLoop currentRunLoop] addTimer:timer_ forMode:mode];
  }
}

Pulse::~Pulse() {
  [timer_ invalidate];
  [timer_ release];
}

tdgui::GuiConfig full_config() {
  watch_calls();
  g_answers.clear();
  return recorded_config();
}

void run_interface(const tdgui::GuiConfig &config, const std::function<void(Interface)> &body) {
  @autoreleasepool {
    Pulse pulse;
    g_interface = {};
    g_body = body;
    GuiTestDriver *driver = [[[GuiTestDriver alloc] init] autorelease];
    [NSTimer scheduledTimerWithTimeInterval:0
                                     target:driver
                                   selector:@selector(runBody:)
                                   userInfo:nil
                                    repeats:NO];
    tdgui::run(config);
    [[NSStatusBar systemStatusBar] removeStatusItem:g_interface.item];
  }
}

std::vector<NSMenuItem *> filled(Interface interface) {
  [interface.controller menuNeedsUpdate:interface.menu];
  std::vector<NSMenuItem *> items;
  for (NSMenuItem *item in [interface.menu itemArray]) {
    items.push_back(item);
  }
  return items;
}

NSMenuItem *item_titled(NSMenu *menu, NSString *title) {
  for (NSMenuItem *item in [menu itemArray]) {
    if ([[item title] isEqualToString:title] ||
        [[[item attributedTitle] string] isEqualToString:title]) {
      return item;
    }
  }
  ADD_FAILURE() << "no item " << [title UTF8String];
  return nil;
}

void turn_loop(NSString *mode) {
  for (int round = 0; round < 5; ++round) {
    [[NSRunLoop currentRunLoop] runMode:mode beforeDate:[NSDate dateWithTimeIntervalSinceNow:1]];
  }
}

bool run_loop_until(const std::function<bool()> &done) {
  const Clock::time_point end = Clock::now() + deadline;
  while (!done() && Clock::now() < end) {
    NSDate *soon = [NSDate dateWithTimeIntervalSinceNow:0.02];
    [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:soon];
  }
  return done();
}

void choose(NSMenuItem *item) {
  [NSApp sendAction:[item action] to:[item target] from:item];
}

void when_alert_runs(const std::function<void(NSWindow *)> &answer) {
  g_answers.push_back(answer);
}

std::size_t unanswered_alerts() {
  return g_answers.size();
}

static void collect(NSView *view, Class cls, std::vector<NSView *> &found) {
  if ([view isKindOfClass:cls]) {
    found.push_back(view);
  }
  for (NSView *subview in [view subviews]) {
    collect(subview, cls, found);
  }
}

std::vector<NSView *> views_of_class(NSWindow *panel, Class cls) {
  std::vector<NSView *> found;
  collect([panel contentView], cls, found);
  return found;
}

std::vector<NSTextField *> editable_fields(NSWindow *panel) {
  std::vector<NSTextField *> found;
  for (NSView *view : views_of_class(panel, [NSTextField class])) {
    NSTextField *field = static_cast<NSTextField *>(view);
    if ([field isEditable]) {
      found.push_back(field);
    }
  }
  return found;
}

void click(NSWindow *panel, NSString *title) {
  for (NSView *view : views_of_class(panel, [NSButton class])) {
    if ([[static_cast<NSButton *>(view) title] isEqualToString:title]) {
      return [static_cast<NSButton *>(view) performClick:nil];
    }
  }
  ADD_FAILURE() << "no button " << [title UTF8String];
  [NSApp stopModalWithCode:NSModalResponseAbort];
}

bool shows(NSWindow *panel, NSString *text) {
  for (NSView *view : views_of_class(panel, [NSTextField class])) {
    if ([[static_cast<NSTextField *>(view) stringValue] isEqualToString:text]) {
      return true;
    }
  }
  return false;
}

} // namespace gui_test
