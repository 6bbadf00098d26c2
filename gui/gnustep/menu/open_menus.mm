#include "menu/open_menus.h"

#include "menu/menu_windows.h"
#include "x11/window_device.h"
#include "x11/x_window.h"

namespace {

constexpr CGFloat scroll_step = 10; // of scroll_on

NSMenuItem *highlighted_item(NSWindow *window) {
  const NSInteger row = [td::menu_view(window) highlightedRow];
  return row < 0 ? nil : [[td::menu_view(window) shownMenu] itemAtIndex:row];
}

int scroll_direction(NSWindow *window, NSPoint point) {
  return [td::menu_view(window) scrollDirectionAtPoint:td::point_in_view(window, point)];
}

} // namespace

namespace td {

OpenMenus::OpenMenus(NSMenu *menu, NSRect anchor) : windows_{open_menu_at(menu, anchor)} {
  take_input();
  [windows_[0] display];
}

OpenMenus::~OpenMenus() {
  release_input(display_of(windows_[0]));
  close_beyond(0);
  close_menu(windows_[0]);
}

void OpenMenus::take_input() {
  NSWindow *window = windows_[0];
  has_input_ = has_input_ || grab_input(display_of(window), x_window_of(window));
}

NSMenu *OpenMenus::menu() const {
  return [menu_view(windows_[0]) shownMenu];
}

bool OpenMenus::contain(NSPoint point) const {
  return depth_at(point) < windows_.size();
}

// --- The pointer --------------------------------------------------------------------------------

void OpenMenus::follow_pointer(NSPoint point) {
  const std::size_t depth = depth_at(point);
  pointer_ = point;
  scrolls_ = false;
  if (depth == windows_.size()) {
    // The row whose submenu is open stays highlighted.
    [menu_view(windows_.back()) setHighlightedRow:-1];
    return;
  }
  NSWindow *window = windows_[depth];
  scrolls_ = scroll_direction(window, point) != 0;
  highlight({depth, [menu_view(window) rowAtPoint:point_in_view(window, point)]});
  open_submenu(depth);
}

NSMenuItem *OpenMenus::highlighted_at(NSPoint point) const {
  return contain(point) ? highlighted_item(windows_[depth_at(point)]) : nil;
}

void OpenMenus::scroll_on() {
  if (contain(pointer_)) {
    scroll(pointer_, scroll_step * scroll_direction(windows_[depth_at(pointer_)], pointer_));
  }
}

void OpenMenus::scroll(NSPoint point, CGFloat distance) {
  const std::size_t depth = depth_at(point);
  if (depth == windows_.size() || ![menu_view(windows_[depth]) scrollBy:distance]) {
    return;
  }
  close_beyond(depth); // a submenu would no longer be beside its row
  follow_pointer(point);
}

// --- The keyboard -------------------------------------------------------------------------------

void OpenMenus::move_highlight(NSInteger step) {
  const std::size_t depth = windows_.size() - 1;
  TDMenuView *view = menu_view(windows_[depth]);
  const NSInteger count = [[view shownMenu] numberOfItems];
  NSInteger row = [view highlightedRow];
  if (row < 0 && step < 0) {
    row = 0;
  }
  scrolls_ = false;
  for (NSInteger tried = 0; tried < count; ++tried) {
    row = (row + step + count) % count;
    if (selectable([[view shownMenu] itemAtIndex:row])) {
      highlight({depth, row});
      return [view scrollToRow:row];
    }
  }
}

NSMenuItem *OpenMenus::highlighted() const {
  return highlighted_item(windows_.back());
}

void OpenMenus::enter_submenu() {
  const std::size_t depth = windows_.size() - 1;
  open_submenu(depth);
  if (windows_.size() > depth + 1) {
    move_highlight(1);
  }
}

bool OpenMenus::leave_submenu() {
  if (windows_.size() == 1) {
    return false;
  }
  close_beyond(windows_.size() - 2);
  return true;
}

// --- Both ---------------------------------------------------------------------------------------

/// Closes the submenus opened from the menu at `depth`.
void OpenMenus::close_beyond(std::size_t depth) {
  while (windows_.size() > depth + 1) {
    close_menu(windows_.back());
    windows_.pop_back();
  }
}

void OpenMenus::open_submenu(std::size_t depth) {
  NSWindow *window = windows_[depth];
  NSMenu *submenu = [highlighted_item(window) submenu];
  if (!submenu || windows_.size() > depth + 1) {
    return;
  }
  const NSRect row = row_on_screen(window, [menu_view(window) highlightedRow]);
  windows_.push_back(open_menu_beside(submenu, row));
  [windows_.back() display];
}

void OpenMenus::highlight(Row place) {
  const auto [depth, row] = place;
  TDMenuView *view = menu_view(windows_[depth]);
  if (row == [view highlightedRow]) {
    return;
  }
  close_beyond(depth);
  [view setHighlightedRow:row];
}

/// The depth of the innermost menu at `point`; the number of menus if there is none.
std::size_t OpenMenus::depth_at(NSPoint point) const {
  for (std::size_t depth = windows_.size(); depth-- > 0;) {
    if (NSPointInRect(point, [windows_[depth] frame])) {
      return depth;
    }
  }
  return windows_.size();
}

} // namespace td
