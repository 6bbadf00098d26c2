/// Draws an open menu. One that is higher than the view scrolls: where rows are hidden beyond an
/// end, a strip with an arrow covers that end.
#pragma once

#include <vector>

#import <AppKit/AppKit.h>

@interface TDMenuView : NSView {
  NSMenu *_shownMenu;
  std::vector<NSRect> *_rows; // unscrolled; a pointer: this runtime constructs no C++ members
  CGFloat _fullHeight;
  CGFloat _scrolled; // how far the rows have moved up
  NSInteger _highlighted;
}

/// The view gets the size that the menu needs; made lower, it scrolls. The menu must not change
/// while it is shown.
- (instancetype)initWithMenu:(NSMenu *)menu;
- (NSMenu *)shownMenu;

/// The item's rectangle in this view's coordinates, whose origin is at the top left. It may be
/// hidden.
- (NSRect)rectOfRow:(NSInteger)row;

/// The index of the item at `point`, in this view's coordinates; -1 if none is seen there.
- (NSInteger)rowAtPoint:(NSPoint)point;

/// The highlighted item's index; -1 if there is none. Separators and disabled items are never
/// highlighted: setting one sets -1.
- (NSInteger)highlightedRow;
- (void)setHighlightedRow:(NSInteger)row;

/// Shows what is `distance` further down, or up when negative, as far as there is anything; returns
/// whether there was.
- (BOOL)scrollBy:(CGFloat)distance;
/// Scrolls as far as is needed to show all of the row.
- (void)scrollToRow:(NSInteger)row;
/// -1 when `point`, in this view's coordinates, is in the strip at the top, 1 when in the one at
/// the bottom, else 0.
- (int)scrollDirectionAtPoint:(NSPoint)point;

@end

namespace td {

/// Whether the user can choose the item or open its submenu.
bool selectable(NSMenuItem *item);

} // namespace td
