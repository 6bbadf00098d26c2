#include "menu/menu_view.h"

#include "menu/menu_text.h"

#include <algorithm>

namespace {

constexpr CGFloat mark_column = 24; // left of the titles, for check marks
constexpr CGFloat key_gap = 28;     // least space between a title and its key equivalent or arrow
constexpr CGFloat right_pad = 14;
constexpr CGFloat row_pad = 8; // above and below a text together
constexpr CGFloat separator_height = 9;
constexpr CGFloat edge_pad = 4; // above the first and below the last row

NSColor *background_colour() {
  return [NSColor colorWithCalibratedWhite:0.98 alpha:1];
}
NSColor *edge_colour() {
  return [NSColor colorWithCalibratedWhite:0.62 alpha:1];
}
NSColor *line_colour() {
  return [NSColor colorWithCalibratedWhite:0.82 alpha:1];
}

/// Pale, so that the coloured dots and grey text stay readable on it.
NSColor *highlight_colour() {
  return [NSColor colorWithCalibratedRed:0.80 green:0.88 blue:0.98 alpha:1];
}

CGFloat right_column_width(NSMenuItem *item) {
  if ([item submenu]) {
    return key_gap + 8;
  }
  NSAttributedString *key = td::shown_key(item);
  return [key length] ? key_gap + [key size].width : 0;
}

CGFloat row_width(NSMenuItem *item) {
  if ([item isSeparatorItem]) {
    return 0;
  }
  return mark_column + ceil([td::shown_title(item) size].width) + ceil(right_column_width(item)) +
         right_pad;
}

CGFloat row_height(NSMenuItem *item) {
  if ([item isSeparatorItem]) {
    return separator_height;
  }
  return ceil([td::shown_title(item) size].height) + row_pad;
}

void draw_separator(NSRect row) {
  [line_colour() set];
  NSRectFill(NSMakeRect(NSMinX(row) + 1, floor(NSMidY(row)), NSWidth(row) - 2, 1));
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

void draw_item(NSMenuItem *item, NSRect row) {
  if ([item isSeparatorItem]) {
    return draw_separator(row);
  }
  if ([item state] == NSControlStateValueOn) {
    draw_check_mark(row);
  }
  draw_text(td::shown_title(item), NSMinX(row) + mark_column, row);
  if ([item submenu]) {
    return draw_submenu_arrow(row);
  }
  NSAttributedString *key = td::shown_key(item);
  draw_text(key, NSMaxX(row) - right_pad - ceil([key size].width), row);
}

} // namespace

namespace td {

bool selectable(NSMenuItem *item) {
  return ![item isSeparatorItem] && [item isEnabled];
}

} // namespace td

@implementation TDMenuView

- (instancetype)initWithMenu:(NSMenu *)menu {
  CGFloat width = 0, height = edge_pad;
  for (NSMenuItem *item in [menu itemArray]) {
    width = std::max(width, row_width(item));
  }
  if (!(self = [super initWithFrame:NSZeroRect])) {
    return nil;
  }
  _rows = new std::vector<NSRect>;
  for (NSMenuItem *item in [menu itemArray]) {
    _rows->push_back(NSMakeRect(1, height, width, row_height(item)));
    height += NSHeight(_rows->back());
  }
  [self setFrameSize:NSMakeSize(width + 2, height + edge_pad)];
  _shownMenu = [menu retain];
  _highlighted = -1;
  return self;
}

- (void)dealloc {
  delete _rows;
  [_shownMenu release];
  [super dealloc];
}

- (NSMenu *)shownMenu {
  return _shownMenu;
}

- (BOOL)isFlipped {
  return YES;
}

- (BOOL)acceptsFirstMouse:(NSEvent *)event {
  return YES;
}

- (NSRect)rectOfRow:(NSInteger)row {
  return (*_rows)[static_cast<std::size_t>(row)];
}

- (NSInteger)rowAtPoint:(NSPoint)point {
  for (std::size_t row = 0; row < _rows->size(); ++row) {
    if (NSPointInRect(point, (*_rows)[row])) {
      return static_cast<NSInteger>(row);
    }
  }
  return -1;
}

- (NSInteger)highlightedRow {
  return _highlighted;
}

- (void)setHighlightedRow:(NSInteger)row {
  if (row >= 0 && !td::selectable([_shownMenu itemAtIndex:row])) {
    row = -1;
  }
  if (row == _highlighted) {
    return;
  }
  _highlighted = row;
  [self display];
}

- (void)drawRect:(NSRect)rect {
  [background_colour() set];
  NSRectFill([self bounds]);
  for (NSInteger row = 0; row < [_shownMenu numberOfItems]; ++row) {
    const NSRect frame = [self rectOfRow:row];
    if (row == _highlighted) {
      [highlight_colour() set];
      NSRectFill(frame);
    }
    draw_item([_shownMenu itemAtIndex:row], frame);
  }
  [edge_colour() set];
  NSFrameRect([self bounds]);
}

@end
