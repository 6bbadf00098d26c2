#include "menu/menu_windows.h"

#include "x11/monitor.h"
#include "x11/window_device.h"
#include "x11/x_window.h"

#include <algorithm>

namespace {

/// As high as the menu, but not higher than the monitor.
NSWindow *make_window(NSMenu *menu, NSRect monitor) {
  TDMenuView *view = [[TDMenuView alloc] initWithMenu:menu];
  NSRect frame = [view frame];
  frame.size.height = std::min(NSHeight(frame), NSHeight(monitor));
  NSWindow *window = [[NSWindow alloc] initWithContentRect:frame
                                                 styleMask:NSBorderlessWindowMask
                                                   backing:NSBackingStoreBuffered
                                                     defer:NO];
  [window setReleasedWhenClosed:NO];
  [window setLevel:NSPopUpMenuWindowLevel];
  [window setExcludedFromWindowsMenu:YES];
  [window setAcceptsMouseMovedEvents:YES];
  [window setContentView:view];
  [view release];
  td::leave_unmanaged(td::display_of(window), td::x_window_of(window));
  return window;
}

/// Shows the window with its top left corner at `corner`, or as near as the monitor allows.
void show(NSWindow *window, NSPoint corner, NSRect monitor) {
  const NSSize size = [window frame].size;
  corner.x = std::max(NSMinX(monitor), std::min(corner.x, NSMaxX(monitor) - size.width));
  corner.y = std::min(NSMaxY(monitor), std::max(corner.y, NSMinY(monitor) + size.height));
  [window setFrameTopLeftPoint:corner];
  [window orderFrontRegardless];
}

} // namespace

namespace td {

NSWindow *open_menu_at(NSMenu *menu, NSRect anchor) {
  const NSRect monitor = monitor_of(anchor);
  NSWindow *window = make_window(menu, monitor);
  const CGFloat height = [window frame].size.height;
  const bool fits_below = NSMinY(anchor) - height >= NSMinY(monitor);
  show(window, NSMakePoint(NSMinX(anchor), fits_below ? NSMinY(anchor) : NSMaxY(anchor) + height),
       monitor);
  return window;
}

NSWindow *open_menu_beside(NSMenu *menu, NSRect row) {
  const NSRect monitor = monitor_of(row);
  NSWindow *window = make_window(menu, monitor);
  const CGFloat width = [window frame].size.width;
  const bool fits_right = NSMaxX(row) + width <= NSMaxX(monitor);
  const CGFloat first_row = NSMinY([menu_view(window) rectOfRow:0]);
  show(window, NSMakePoint(fits_right ? NSMaxX(row) : NSMinX(row) - width, NSMaxY(row) + first_row),
       monitor);
  return window;
}

void close_menu(NSWindow *window) {
  [window close];
  [window release];
}

TDMenuView *menu_view(NSWindow *window) {
  return static_cast<TDMenuView *>([window contentView]);
}

NSPoint point_in_view(NSWindow *window, NSPoint on_screen) {
  return [menu_view(window) convertPoint:[window convertScreenToBase:on_screen] fromView:nil];
}

NSRect row_on_screen(NSWindow *window, NSInteger row) {
  const NSRect in_window = [menu_view(window) convertRect:[menu_view(window) rectOfRow:row]
                                                   toView:nil];
  const NSPoint corner = [window convertBaseToScreen:in_window.origin];
  return NSMakeRect(corner.x, corner.y, NSWidth(in_window), NSHeight(in_window));
}

} // namespace td
