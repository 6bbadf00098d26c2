#include "menu/menu_windows.h"

#include <algorithm>

namespace {

NSWindow *make_window(NSMenu *menu) {
  TDMenuView *view = [[TDMenuView alloc] initWithMenu:menu];
  NSWindow *window = [[NSWindow alloc] initWithContentRect:[view frame]
                                                 styleMask:NSBorderlessWindowMask
                                                   backing:NSBackingStoreBuffered
                                                     defer:NO];
  [window setReleasedWhenClosed:NO];
  [window setLevel:NSPopUpMenuWindowLevel];
  [window setExcludedFromWindowsMenu:YES];
  [window setAcceptsMouseMovedEvents:YES];
  [window setContentView:view];
  [view release];
  return window;
}

/// Shows the window with its top left corner at `corner`, or as near as the screen allows.
void show(NSWindow *window, NSPoint corner) {
  const NSRect screen = [[NSScreen mainScreen] frame];
  const NSSize size = [window frame].size;
  corner.x = std::max(NSMinX(screen), std::min(corner.x, NSMaxX(screen) - size.width));
  corner.y = std::min(NSMaxY(screen), std::max(corner.y, NSMinY(screen) + size.height));
  [window setFrameTopLeftPoint:corner];
  [window orderFrontRegardless];
  [window display];
}

} // namespace

namespace td {

NSWindow *open_menu_at(NSMenu *menu, NSRect anchor) {
  NSWindow *window = make_window(menu);
  const CGFloat height = [window frame].size.height;
  const bool fits_below = NSMinY(anchor) - height >= NSMinY([[NSScreen mainScreen] frame]);
  show(window, NSMakePoint(NSMinX(anchor), fits_below ? NSMinY(anchor) : NSMaxY(anchor) + height));
  return window;
}

NSWindow *open_menu_beside(NSMenu *menu, NSRect row) {
  NSWindow *window = make_window(menu);
  const CGFloat width = [window frame].size.width;
  const bool fits_right = NSMaxX(row) + width <= NSMaxX([[NSScreen mainScreen] frame]);
  const CGFloat first_row = NSMinY([menu_view(window) rectOfRow:0]);
  show(window,
       NSMakePoint(fits_right ? NSMaxX(row) : NSMinX(row) - width, NSMaxY(row) + first_row));
  return window;
}

void close_menu(NSWindow *window) {
  [window close];
  [window release];
}

TDMenuView *menu_view(NSWindow *window) {
  return static_cast<TDMenuView *>([window contentView]);
}

NSRect row_on_screen(NSWindow *window, NSInteger row) {
  const NSRect in_window = [menu_view(window) convertRect:[menu_view(window) rectOfRow:row]
                                                   toView:nil];
  const NSPoint corner = [window convertBaseToScreen:in_window.origin];
  return NSMakeRect(corner.x, corner.y, NSWidth(in_window), NSHeight(in_window));
}

NSInteger row_at(NSWindow *window, NSPoint point) {
  const NSPoint in_window = [window convertScreenToBase:point];
  return [menu_view(window) rowAtPoint:[menu_view(window) convertPoint:in_window fromView:nil]];
}

} // namespace td
