/// The windows of an open menu: the menu itself and the submenus open beside it.
#pragma once

#include "menu/menu_view.h"

namespace td {

/// Shows `menu` just below `anchor` or, where that leaves the screen, just above it. Screen
/// coordinates. The caller closes and releases the window.
NSWindow *open_menu_at(NSMenu *menu, NSRect anchor);

/// Shows `menu` to the right of `row`, or to its left where that leaves the screen.
NSWindow *open_menu_beside(NSMenu *menu, NSRect row);

/// Takes a window made by the two above off the screen and releases it.
void close_menu(NSWindow *window);

TDMenuView *menu_view(NSWindow *window);

/// An item's rectangle on the screen.
NSRect row_on_screen(NSWindow *window, NSInteger row);

/// The index of the item at a point of the screen; -1 for none.
NSInteger row_at(NSWindow *window, NSPoint point);

} // namespace td
