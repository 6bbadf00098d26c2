/// Draws an open menu: attributed titles, separators, check marks, key equivalents.
#pragma once

#include <vector>

#import <AppKit/AppKit.h>

@interface TDMenuView : NSView {
  NSMenu *_shownMenu;
  std::vector<NSRect> *_rows; // a pointer: this runtime constructs no C++ instance variables
  NSInteger _highlighted;
}

/// The view gets the size that the menu needs. The menu must not change while it is shown.
- (instancetype)initWithMenu:(NSMenu *)menu;
- (NSMenu *)shownMenu;

/// The item's rectangle in this view's coordinates, whose origin is at the top left.
- (NSRect)rectOfRow:(NSInteger)row;

/// The index of the item at `point`, in this view's coordinates; -1 if there is none.
- (NSInteger)rowAtPoint:(NSPoint)point;

/// The highlighted item's index; -1 if there is none. Separators and disabled items are never
/// highlighted: setting one sets -1.
- (NSInteger)highlightedRow;
- (void)setHighlightedRow:(NSInteger)row;

@end

namespace td {

/// Whether the user can choose the item or open its submenu.
bool selectable(NSMenuItem *item);

} // namespace td
