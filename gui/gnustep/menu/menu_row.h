/// The size and the drawing of one row of an open menu.
#pragma once

#import <AppKit/AppKit.h>

namespace td {

/// The least width in which the item's check mark, title and key equivalent or arrow find room.
CGFloat row_width(NSMenuItem *item);
CGFloat row_height(NSMenuItem *item);

/// Draws the item, which is no separator, into `row`. In a flipped view only.
void draw_item(NSMenuItem *item, NSRect row);

/// Draws the line between two groups of items in the middle of `gap`.
void draw_separator(NSRect gap);

} // namespace td
