#include "menu/popup_menu.h"

#include "menu/menu_keys.h"
#include "menu/open_menus.h"

#include <cmath>

namespace {

constexpr NSTimeInterval grab_interval = 0.02;   // seconds, while another program holds a grab
constexpr NSTimeInterval scroll_interval = 0.03; // seconds, while the pointer rests on a strip
constexpr CGFloat wheel_distance = 46;           // pixels, for one notch
constexpr CGFloat still = 4; // a pointer moved less has not been moved on purpose

enum class Outcome { open, chosen, dismissed };

/// The state of an open menu: what is on the screen and what the user has done so far.
struct Tracking {
  td::OpenMenus menus;
  NSPoint opened_at; ///< the pointer's place
  NSMenuItem *chosen = nil;
  bool opening_click = true; ///< the mouse button that opened the menu is not released yet
};

Outcome choose(Tracking &tracking, NSMenuItem *item) {
  if (!item || [item submenu]) {
    return Outcome::open;
  }
  tracking.chosen = item;
  return Outcome::chosen;
}

Outcome mouse_down(Tracking &tracking, NSPoint point) {
  tracking.opening_click = false;
  if (!tracking.menus.contain(point)) {
    return Outcome::dismissed;
  }
  tracking.menus.follow_pointer(point);
  return Outcome::open;
}

/// Whether the pointer is where it was when the menu opened.
bool is_still(const Tracking &tracking, NSPoint point) {
  return std::hypot(point.x - tracking.opened_at.x, point.y - tracking.opened_at.y) < still;
}

Outcome mouse_up(Tracking &tracking, NSPoint point) {
  const bool opens = tracking.opening_click;
  tracking.opening_click = false;
  if (!tracking.menus.contain(point)) {
    return opens ? Outcome::open : Outcome::dismissed;
  }
  tracking.menus.follow_pointer(point);
  if (opens && is_still(tracking, point)) {
    return Outcome::open; // the menu has opened over the icon, and this is the end of the click
  }
  return choose(tracking, tracking.menus.highlighted_at(point));
}

Outcome key_down(Tracking &tracking, NSEvent *event) {
  td::OpenMenus &menus = tracking.menus;
  NSString *characters = [event charactersIgnoringModifiers];
  switch ([characters length] ? [characters characterAtIndex:0] : 0) {
  case NSUpArrowFunctionKey:
    menus.move_highlight(-1);
    return Outcome::open;
  case NSDownArrowFunctionKey:
    menus.move_highlight(1);
    return Outcome::open;
  case NSRightArrowFunctionKey:
    menus.enter_submenu();
    return Outcome::open;
  case NSLeftArrowFunctionKey:
    menus.leave_submenu();
    return Outcome::open;
  case '\033':
    return menus.leave_submenu() ? Outcome::open : Outcome::dismissed;
  case '\r': {
    NSMenuItem *item = menus.highlighted();
    menus.enter_submenu(); // the item's, if it has one
    return choose(tracking, item);
  }
  default:
    return choose(tracking, td::item_for_key(menus.menu(), event));
  }
}

NSPoint point_on_screen(NSEvent *event) {
  NSWindow *window = [event window];
  return window ? [window convertBaseToScreen:[event locationInWindow]] : [NSEvent mouseLocation];
}

Outcome handle(Tracking &tracking, NSEvent *event) {
  switch ([event type]) {
  case NSMouseMoved:
  case NSLeftMouseDragged:
  case NSRightMouseDragged:
    tracking.menus.follow_pointer(point_on_screen(event));
    return Outcome::open;
  case NSScrollWheel:
    tracking.menus.scroll(point_on_screen(event), -wheel_distance * [event deltaY]);
    return Outcome::open;
  case NSLeftMouseDown:
  case NSRightMouseDown:
    return mouse_down(tracking, point_on_screen(event));
  case NSLeftMouseUp:
  case NSRightMouseUp:
    return mouse_up(tracking, point_on_screen(event));
  case NSKeyDown:
    return key_down(tracking, event);
  default:
    [NSApp sendEvent:event];
    return Outcome::open;
  }
}

NSDate *next_deadline(const Tracking &tracking) {
  if (!tracking.menus.has_input()) {
    return [NSDate dateWithTimeIntervalSinceNow:grab_interval];
  }
  return tracking.menus.scrolls() ? [NSDate dateWithTimeIntervalSinceNow:scroll_interval]
                                  : [NSDate distantFuture];
}

Outcome next_step(Tracking &tracking) {
  @autoreleasepool {
    NSEvent *event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                        untilDate:next_deadline(tracking)
                                           inMode:NSEventTrackingRunLoopMode
                                          dequeue:YES];
    if (event) {
      return handle(tracking, event);
    }
    tracking.menus.take_input();
    tracking.menus.scroll_on();
    return Outcome::open;
  }
}

NSMenuItem *track(NSMenu *menu, NSRect anchor) {
  Tracking tracking{{menu, anchor}, [NSEvent mouseLocation]};
  while (next_step(tracking) == Outcome::open) {}
  return tracking.chosen;
}

/// What AppKit does before a menu opens: the delegate fills it, then its items are enabled or
/// disabled.
void prepare(NSMenu *menu) {
  if ([[menu delegate] respondsToSelector:@selector(menuNeedsUpdate:)]) {
    [[menu delegate] menuNeedsUpdate:menu];
  }
  [menu update];
  for (NSMenuItem *item in [menu itemArray]) {
    [[item submenu] update];
  }
}

} // namespace

namespace td {

void pop_up_menu(NSMenu *menu, NSRect anchor) {
  prepare(menu);
  NSMenuItem *chosen = track(menu, anchor);
  if (chosen) {
    [NSApp sendAction:[chosen action] to:[chosen target] from:chosen];
  }
}

} // namespace td
