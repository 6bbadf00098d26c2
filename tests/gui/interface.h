/// Runs the interface in the test's own process, with callbacks that record their calls.
#pragma once

#include "tdgui.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

#import <AppKit/AppKit.h>

namespace gui_test {

/// What the callbacks answer, and what they were called with.
struct Record {
  std::map<std::string, bool> running = {{"hub", true}, {"receiver", true}, {"sender", true}};
  int http = 8080; ///< an accepted set_ports changes both
  int udp = 8081;
  bool ports_accepted = true;
  std::string refusal;
  bool open_browser = false;
  std::vector<std::string> calls; ///< "stop hub", "set_ports 1 2", ...; questions are not recorded
  int questions = 0;              ///< calls of is_running
};

/// Starts afresh with each full_config().
Record &record();

/// Three components and every callback but quit_fallback, all of them record()'s; a callback fails
/// the test when it is called off the main thread. Call it before anything else here.
tdgui::GuiConfig full_config();

/// The pieces of a running interface.
struct Interface {
  id controller;
  NSStatusItem *item;
  NSMenu *menu;
  CGFloat asked_length;                 ///< of the status item
  NSApplicationActivationPolicy policy; ///< -1 when none was set
  std::vector<std::string> steps;       ///< of run(), as far as they can be seen from outside
};

/// tdgui::run with `config`; `body` runs in its event loop, which ends after it.
void run_interface(const tdgui::GuiConfig &config, const std::function<void(Interface)> &body);

/// Lets the delegate fill the menu, as opening it does, and returns its items.
std::vector<NSMenuItem *> filled(Interface interface);

/// The first item with that title (plain, or an attributed title's text); fails the test if none.
NSMenuItem *item_titled(NSMenu *menu, NSString *title);

/// A few rounds of the event loop in that mode, each ended by something that happens in it: the
/// pulse, if nothing else.
void turn_loop(NSString *mode);

/// Sends the item's action to its target.
void choose(NSMenuItem *item);

/// Keeps the event loop turning and answers alerts while it lives. GNUstep looks at its queue of
/// events only after input from the X server; the pulse provides some.
class Pulse {
public:
  Pulse();
  ~Pulse();
  Pulse(const Pulse &) = delete;
  Pulse &operator=(const Pulse &) = delete;

private:
  NSTimer *timer_;
};

/// Has `answer` called with the panel of the next modal alert, in its modal loop; it must click a
/// button there. Several calls queue up, one alert each.
void when_alert_runs(const std::function<void(NSWindow *panel)> &answer);

/// How many of those have not been called yet.
std::size_t unanswered_alerts();

/// Views of the panel's content, subviews included, of a class.
std::vector<NSView *> views_of_class(NSWindow *panel, Class cls);

/// The panel's text fields that can be typed into, in the order of the views.
std::vector<NSTextField *> editable_fields(NSWindow *panel);

/// Clicks the panel's button with that title; fails the test, and ends the modal loop, if none.
void click(NSWindow *panel, NSString *title);

/// Whether some text field of the panel shows exactly this.
bool shows(NSWindow *panel, NSString *text);

} // namespace gui_test
