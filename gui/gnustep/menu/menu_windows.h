/// The windows of an open menu and of the submenus open beside it.
#pragma once

#include "menu/menu_view.h"

namespace td {

/// Shows `menu` just below `anchor` or, if it does not fit on the screen there, just above it.
/// Screen coordinates. The caller ends it with close_menu().
NSWindow *open_menu_at(NSMenu *menu, NSRect anchor);

/// Shows `menu` to the right of `row`, or to its left if it does not fit on the screen there.
/// Screen coordinates. The caller ends it with close_menu().
NSWindow *open_menu_beside(NSMenu *menu, NSRect row);

/// Closes and releases a window made by one of the two functions above.
void close_menu(NSWindow *window);

TDMenuView *menu_view(NSWindow *window);

/// An item's rectangle in screen coordinates.
NSRect row_on_screen(NSWindow *window, NSInteger row);

/// The index of the item at `point`, in screen coordinates; -1 if there is none.
NSInteger row_at(NSWindow *window, NSPoint point);

} // namespace td
