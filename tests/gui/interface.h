/// Runs the interface in the test process, with callbacks that record their calls.
#pragma once

#include "record.h"

#include <functional>
#include <string>
#include <vector>

#import <AppKit/AppKit.h>

/// The interface's own object, as far as the tests use it.
@protocol GuiTestController <NSMenuDelegate>
- (NSStatusItem *)item;
@end

namespace gui_test {

/// recorded_config(). Call this before anything else here.
tdgui::GuiConfig full_config();

/// The objects of a running interface.
struct Interface {
  id<GuiTestController> controller = nil;
  NSStatusItem *item = nil;
  NSMenu *menu = nil;
  CGFloat asked_length = 0; ///< of the status item
  /// -1 when none was set.
  NSApplicationActivationPolicy policy = static_cast<NSApplicationActivationPolicy>(-1);
  std::vector<std::string> steps; ///< what run() did, in order
};

/// Calls tdgui::run with `config` and runs `body` in its event loop, which then ends.
void run_interface(const tdgui::GuiConfig &config, const std::function<void(Interface)> &body);

/// Lets the delegate fill the menu, as when it opens, and returns the items.
std::vector<NSMenuItem *> filled(Interface interface);

/// The first item with that title, plain or attributed; fails the test if there is none.
NSMenuItem *item_titled(NSMenu *menu, NSString *title);

/// Runs the event loop a few times in that mode, each time until an event arrives: one of
/// those of Pulse at the latest.
void turn_loop(NSString *mode);

/// Sends the item's action to its target.
void choose(NSMenuItem *item);

/// Runs the event loop until `done` returns true, for at most ten seconds; returns its last result.
bool run_loop_until(const std::function<bool()> &done);

/// While it exists, wakes the event loop regularly and answers alerts.
class Pulse {
public:
  Pulse();
  ~Pulse();
  Pulse(const Pulse &) = delete;
  Pulse &operator=(const Pulse &) = delete;

private:
  NSTimer *timer_;
};

/// Registers `answer` for the next modal alert: it is called in the modal loop with the alert's
/// panel and must click a button there. Several answers are used in order, one for each alert.
void when_alert_runs(const std::function<void(NSWindow *panel)> &answer);

/// How many of these answers have not been called yet.
std::size_t unanswered_alerts();

/// The views of that class in the panel, at any depth.
std::vector<NSView *> views_of_class(NSWindow *panel, Class cls);

/// The panel's editable text fields, in the order of the views.
std::vector<NSTextField *> editable_fields(NSWindow *panel);

/// Clicks the panel's button with that title; if there is none, fails the test and ends the modal
/// loop.
void click(NSWindow *panel, NSString *title);

/// Whether a text field of the panel shows exactly this text.
bool shows(NSWindow *panel, NSString *text);

} // namespace gui_test
