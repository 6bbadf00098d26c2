#include "menu/popup_menu.h"

#include "menu/menu_windows.h"
#include "x11/window_device.h"
#include "x11/x_window.h"

#include <vector>

namespace {

enum class Outcome { open, chosen, dismissed };

/// The state of an open menu: its windows, outermost first, and what the user has done so far.
struct Tracking {
  std::vector<NSWindow *> windows;
  NSMenuItem *chosen = nil;
  bool opening_click = true; // the mouse button that opened the menu is not released yet
};

/// One row of the open menus.
struct Row {
  std::size_t depth; ///< of its window, 0 for the outermost
  NSInteger row;     ///< from 0; -1: none
};

/// Closes the submenus opened from the window at `depth`.
void close_beyond(Tracking &tracking, std::size_t depth) {
  while (tracking.windows.size() > depth + 1) {
    td::close_menu(tracking.windows.back());
    tracking.windows.pop_back();
  }
}

NSMenuItem *highlighted_item(NSWindow *window) {
  const NSInteger row = [td::menu_view(window) highlightedRow];
  return row < 0 ? nil : [[td::menu_view(window) shownMenu] itemAtIndex:row];
}

void open_submenu(Tracking &tracking, std::size_t depth) {
  NSWindow *window = tracking.windows[depth];
  NSMenu *submenu = [highlighted_item(window) submenu];
  if (!submenu || tracking.windows.size() > depth + 1) {
    return;
  }
  const NSRect row = td::row_on_screen(window, [td::menu_view(window) highlightedRow]);
  tracking.windows.push_back(td::open_menu_beside(submenu, row));
}

void highlight(Tracking &tracking, Row place) {
  const auto [depth, row] = place;
  TDMenuView *view = td::menu_view(tracking.windows[depth]);
  if (row == [view highlightedRow]) {
    return;
  }
  close_beyond(tracking, depth);
  [view setHighlightedRow:row];
}

/// The depth of the innermost open menu at `point` (screen coordinates); the number of windows if
/// there is none.
std::size_t depth_at(const Tracking &tracking, NSPoint point) {
  for (std::size_t depth = tracking.windows.size(); depth-- > 0;) {
    if (NSPointInRect(point, [tracking.windows[depth] frame])) {
      return depth;
    }
  }
  return tracking.windows.size();
}

void follow_pointer(Tracking &tracking, NSPoint point) {
  const std::size_t depth = depth_at(tracking, point);
  if (depth == tracking.windows.size()) {
    // The row whose submenu is open stays highlighted.
    [td::menu_view(tracking.windows.back()) setHighlightedRow:-1];
    return;
  }
  highlight(tracking, {depth, td::row_at(tracking.windows[depth], point)});
  open_submenu(tracking, depth);
}

Outcome choose(Tracking &tracking, NSMenuItem *item) {
  if (!item || [item submenu]) {
    return Outcome::open;
  }
  tracking.chosen = item;
  return Outcome::chosen;
}

Outcome mouse_down(Tracking &tracking, NSPoint point) {
  tracking.opening_click = false;
  if (depth_at(tracking, point) == tracking.windows.size()) {
    return Outcome::dismissed;
  }
  follow_pointer(tracking, point);
  return Outcome::open;
}

Outcome mouse_up(Tracking &tracking, NSPoint point) {
  const std::size_t depth = depth_at(tracking, point);
  if (depth == tracking.windows.size()) {
    const bool dragged_off = !tracking.opening_click;
    tracking.opening_click = false;
    return dragged_off ? Outcome::dismissed : Outcome::open;
  }
  tracking.opening_click = false;
  follow_pointer(tracking, point);
  return choose(tracking, highlighted_item(tracking.windows[depth]));
}

void move_highlight(Tracking &tracking, NSInteger step) {
  const std::size_t depth = tracking.windows.size() - 1;
  TDMenuView *view = td::menu_view(tracking.windows[depth]);
  const NSInteger count = [[view shownMenu] numberOfItems];
  NSInteger row = [view highlightedRow];
  if (row < 0 && step < 0) {
    row = 0;
  }
  for (NSInteger tried = 0; tried < count; ++tried) {
    row = (row + step + count) % count;
    if (td::selectable([[view shownMenu] itemAtIndex:row])) {
      return highlight(tracking, {depth, row});
    }
  }
}

void enter_submenu(Tracking &tracking) {
  const std::size_t depth = tracking.windows.size() - 1;
  open_submenu(tracking, depth);
  if (tracking.windows.size() > depth + 1) {
    move_highlight(tracking, 1);
  }
}

/// Closes the innermost submenu; without one, dismisses the menu.
Outcome leave_submenu(Tracking &tracking) {
  if (tracking.windows.size() == 1) {
    return Outcome::dismissed;
  }
  close_beyond(tracking, tracking.windows.size() - 2);
  return Outcome::open;
}

NSMenuItem *item_for_key(NSMenu *menu, NSEvent *event) {
  NSString *typed = [[event charactersIgnoringModifiers] lowercaseString];
  for (NSMenuItem *item in [menu itemArray]) {
    const NSUInteger mask = [item keyEquivalentModifierMask];
    if ([typed length] && [[item keyEquivalent] isEqualToString:typed] &&
        ([event modifierFlags] & mask) == mask && td::selectable(item)) {
      return item;
    }
  }
  return nil;
}

Outcome key_down(Tracking &tracking, NSEvent *event) {
  NSString *characters = [event charactersIgnoringModifiers];
  switch ([characters length] ? [characters characterAtIndex:0] : 0) {
  case NSUpArrowFunctionKey:
    move_highlight(tracking, -1);
    return Outcome::open;
  case NSDownArrowFunctionKey:
    move_highlight(tracking, 1);
    return Outcome::open;
  case NSRightArrowFunctionKey:
    enter_submenu(tracking);
    return Outcome::open;
  case NSLeftArrowFunctionKey:
    if (tracking.windows.size() > 1) {
      leave_submenu(tracking);
    }
    return Outcome::open;
  case '\033':
    return leave_submenu(tracking);
  case '\r':
    enter_submenu(tracking);
    return choose(tracking, highlighted_item(tracking.windows.back()));
  default:
    return choose(tracking, item_for_key([td::menu_view(tracking.windows[0]) shownMenu], event));
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
    follow_pointer(tracking, point_on_screen(event));
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

Outcome next_step(Tracking &tracking) {
  @autoreleasepool {
    NSEvent *event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                        untilDate:[NSDate distantFuture]
                                           inMode:NSEventTrackingRunLoopMode
                                          dequeue:YES];
    return handle(tracking, event);
  }
}

NSMenuItem *track(NSMenu *menu, NSRect anchor) {
  Tracking tracking;
  tracking.windows.push_back(td::open_menu_at(menu, anchor));
  NSWindow *window = tracking.windows[0];
  td::grab_input(td::display_of(window), td::x_window_of(window));
  while (next_step(tracking) == Outcome::open) {}
  td::release_input(td::display_of(window));
  close_beyond(tracking, 0);
  td::close_menu(window);
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
