#include "menu/menu_row.h"

#include "menu/menu_text.h"

namespace {

constexpr CGFloat mark_column = 24; // left of the titles, for check marks
constexpr CGFloat key_gap = 28;     // least space between a title and its key equivalent or arrow
constexpr CGFloat right_pad = 14;
constexpr CGFloat row_pad = 8; // above and below a text together
constexpr CGFloat separator_height = 9;

CGFloat right_column_width(NSMenuItem *item) {
  if ([item submenu]) {
    return key_gap + 8;
  }
  NSAttributedString *key = td::shown_key(item);
  return [key length] ? key_gap + [key size].width : 0;
}

void draw_check_mark(NSRect row) {
  NSBezierPath *path = [NSBezierPath bezierPath];
  const CGFloat x = NSMinX(row) + 8, y = NSMidY(row);
  [path moveToPoint:NSMakePoint(x, y)];
  [path lineToPoint:NSMakePoint(x + 3, y + 4)];
  [path lineToPoint:NSMakePoint(x + 9, y - 4)];
  [path setLineWidth:1.8];
  [[NSColor controlTextColor] set];
  [path stroke];
}

void draw_submenu_arrow(NSRect row) {
  NSBezierPath *path = [NSBezierPath bezierPath];
  const CGFloat x = NSMaxX(row) - right_pad - 5, y = NSMidY(row);
  [path moveToPoint:NSMakePoint(x, y - 4)];
  [path lineToPoint:NSMakePoint(x + 5, y)];
  [path lineToPoint:NSMakePoint(x, y + 4)];
  [path closePath];
  [[NSColor colorWithCalibratedWhite:0.35 alpha:1] set];
  [path fill];
}

void draw_text(NSAttributedString *text, CGFloat x, NSRect row) {
  [text drawAtPoint:NSMakePoint(x, floor(NSMidY(row) - [text size].height / 2))];
}

} // namespace

namespace td {

CGFloat row_width(NSMenuItem *item) {
  if ([item isSeparatorItem]) {
    return 0;
  }
  return mark_column + ceil([shown_title(item) size].width) + ceil(right_column_width(item)) +
         right_pad;
}

CGFloat row_height(NSMenuItem *item) {
  if ([item isSeparatorItem]) {
    return separator_height;
  }
  return ceil([shown_title(item) size].height) + row_pad;
}

void draw_separator(NSRect gap) {
  [[NSColor colorWithCalibratedWhite:0.82 alpha:1] set];
  NSRectFill(NSMakeRect(NSMinX(gap) + 1, floor(NSMidY(gap)), NSWidth(gap) - 2, 1));
}

void draw_item(NSMenuItem *item, NSRect row) {
  if ([item state] == NSControlStateValueOn) {
    draw_check_mark(row);
  }
  draw_text(shown_title(item), NSMinX(row) + mark_column, row);
  if ([item submenu]) {
    return draw_submenu_arrow(row);
  }
  NSAttributedString *key = shown_key(item);
  draw_text(key, NSMaxX(row) - right_pad - ceil([key size].width), row);
}

} // namespace td
