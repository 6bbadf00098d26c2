/// A menu on the screen with the submenus that are open beside it.
#pragma once

#include <vector>

#import <AppKit/AppKit.h>

namespace td {

/// Main thread only. Points are in screen coordinates.
class OpenMenus {
public:
  /// Opens `menu` below or above `anchor` (screen coordinates). It must not change while open. It
  /// has the pointer and the keyboard before it can be seen, unless another program holds a grab.
  OpenMenus(NSMenu *menu, NSRect anchor);
  /// Closes all of them and gives pointer and keyboard back.
  ~OpenMenus();
  OpenMenus(const OpenMenus &) = delete;
  OpenMenus &operator=(const OpenMenus &) = delete;

  /// False: another program holds a grab, perhaps while the button that opened the menu is down.
  /// take_input() is then to be called again and again.
  bool has_input() const { return has_input_; }
  void take_input();

  NSMenu *menu() const;
  bool contain(NSPoint point) const;

  /// Highlights the row at `point`, if any, and opens its submenu. At a strip at the end of a
  /// menu that scrolls, scrolls() becomes true.
  void follow_pointer(NSPoint point);
  /// The highlighted item of the innermost menu at `point`; nil if there is none.
  NSMenuItem *highlighted_at(NSPoint point) const;

  /// Whether the pointer rests on a strip: scroll_on() is then to be called again and again.
  bool scrolls() const { return scrolls_; }
  void scroll_on();
  /// Scrolls the menu at `point` by `distance`, downwards when positive.
  void scroll(NSPoint point, CGFloat distance);

  /// Highlights the next (1) or the previous (-1) item of the innermost menu that can be chosen,
  /// and scrolls to it.
  void move_highlight(NSInteger step);
  /// The highlighted item of the innermost menu; nil if there is none.
  NSMenuItem *highlighted() const;
  /// Opens the highlighted item's submenu, if it has one, and highlights its first item.
  void enter_submenu();
  /// Closes the innermost submenu; false when there is none.
  bool leave_submenu();

private:
  struct Row {
    std::size_t depth; // of its menu, 0 for the outermost
    NSInteger row;     // from 0; -1: none
  };

  void close_beyond(std::size_t depth);
  void open_submenu(std::size_t depth);
  void highlight(Row place);
  std::size_t depth_at(NSPoint point) const;

  std::vector<NSWindow *> windows_; // outermost first
  NSPoint pointer_ = {};            // where follow_pointer has seen it
  bool has_input_ = false;
  bool scrolls_ = false;
};

} // namespace td
