/// The windows of an open menu and of the submenus open beside it. They are not managed by a window
/// manager, which would place them, and stay inside one monitor. Opening them does not draw them.
#pragma once

#include "menu/menu_view.h"

namespace td {

/// Shows `menu` just below `anchor` or, if it does not fit there on the monitor of `anchor`, just
/// above it; if it fits neither below nor above, over it. Screen coordinates. The caller ends it
/// with close_menu().
NSWindow *open_menu_at(NSMenu *menu, NSRect anchor);

/// Shows `menu` to the right of `row`, or to its left if it does not fit on the row's monitor
/// there. Screen coordinates. The caller ends it with close_menu().
NSWindow *open_menu_beside(NSMenu *menu, NSRect row);

/// Closes and releases a window made by one of the two functions above.
void close_menu(NSWindow *window);

TDMenuView *menu_view(NSWindow *window);

/// A point in the coordinates of the window's view.
NSPoint point_in_view(NSWindow *window, NSPoint on_screen);

/// An item's rectangle in screen coordinates.
NSRect row_on_screen(NSWindow *window, NSInteger row);

} // namespace td
