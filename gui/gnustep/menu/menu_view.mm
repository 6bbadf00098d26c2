#include "menu/menu_view.h"

#include "menu/menu_row.h"

#include <algorithm>

namespace {

constexpr CGFloat edge_pad = 4; // above the first and below the last row
constexpr CGFloat strip_height = 18;

NSColor *background_colour() {
  return [NSColor colorWithCalibratedWhite:0.98 alpha:1];
}
NSColor *edge_colour() {
  return [NSColor colorWithCalibratedWhite:0.62 alpha:1];
}

/// Pale, so that the coloured dots and grey text stay readable on it.
NSColor *highlight_colour() {
  return [NSColor colorWithCalibratedRed:0.80 green:0.88 blue:0.98 alpha:1];
}

/// An arrow that points up (`direction` -1) or down (1), on the menu's background.
void draw_strip(NSRect strip, int direction) {
  [background_colour() set];
  NSRectFill(strip);
  NSBezierPath *path = [NSBezierPath bezierPath];
  const CGFloat x = NSMidX(strip), y = NSMidY(strip);
  [path moveToPoint:NSMakePoint(x - 5, y - 2.5 * direction)];
  [path lineToPoint:NSMakePoint(x + 5, y - 2.5 * direction)];
  [path lineToPoint:NSMakePoint(x, y + 2.5 * direction)];
  [path closePath];
  [[NSColor colorWithCalibratedWhite:0.35 alpha:1] set];
  [path fill];
}

} // namespace

namespace td {

bool selectable(NSMenuItem *item) {
  return ![item isSeparatorItem] && [item isEnabled];
}

} // namespace td

@implementation TDMenuView

- (instancetype)initWithMenu:(NSMenu *)menu {
  CGFloat width = 0;
  for (NSMenuItem *item in [menu itemArray]) {
    width = std::max(width, td::row_width(item));
  }
  if (!(self = [super initWithFrame:NSZeroRect])) {
    return nil;
  }
  _rows = new std::vector<NSRect>;
  _fullHeight = edge_pad;
  for (NSMenuItem *item in [menu itemArray]) {
    _rows->push_back(NSMakeRect(1, _fullHeight, width, td::row_height(item)));
    _fullHeight += NSHeight(_rows->back());
  }
  _fullHeight += edge_pad;
  [self setFrameSize:NSMakeSize(width + 2, _fullHeight)];
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
  return NSOffsetRect((*_rows)[static_cast<std::size_t>(row)], 0, -_scrolled);
}

- (NSInteger)rowAtPoint:(NSPoint)point {
  if ([self scrollDirectionAtPoint:point] != 0) {
    return -1;
  }
  for (NSInteger row = 0; row < [_shownMenu numberOfItems]; ++row) {
    if (NSPointInRect(point, [self rectOfRow:row])) {
      return row;
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

// --- Scrolling ----------------------------------------------------------------------------------

/// How far the rows can move up.
- (CGFloat)scrollRange {
  return std::max<CGFloat>(0, _fullHeight - NSHeight([self bounds]));
}

/// The strip at the top (-1) or the bottom (1); empty when nothing is hidden beyond that end.
- (NSRect)stripAtEnd:(int)direction {
  if (direction < 0 ? _scrolled <= 0 : _scrolled >= [self scrollRange]) {
    return NSZeroRect;
  }
  NSRect strip = [self bounds];
  strip.origin.y = direction < 0 ? 0 : NSMaxY(strip) - strip_height;
  strip.size.height = strip_height;
  return strip;
}

- (BOOL)scrollBy:(CGFloat)distance {
  const CGFloat before = _scrolled;
  _scrolled = std::clamp<CGFloat>(_scrolled + distance, 0, [self scrollRange]);
  if (_scrolled == before) {
    return NO;
  }
  [self display];
  return YES;
}

- (void)scrollToRow:(NSInteger)row {
  const NSRect rect = [self rectOfRow:row];
  const CGFloat above = NSMinY(rect) - strip_height;
  const CGFloat below = NSMaxY(rect) - (NSHeight([self bounds]) - strip_height);
  if (above < 0) {
    [self scrollBy:above];
  } else if (below > 0) {
    [self scrollBy:below];
  }
}

- (int)scrollDirectionAtPoint:(NSPoint)point {
  for (const int direction : {-1, 1}) {
    if (NSPointInRect(point, [self stripAtEnd:direction])) {
      return direction;
    }
  }
  return 0;
}

// --- Drawing ------------------------------------------------------------------------------------

- (bool)isSeparator:(NSInteger)row {
  return row >= 0 && row < [_shownMenu numberOfItems] &&
         [[_shownMenu itemAtIndex:row] isSeparatorItem];
}

/// Separators next to each other are one gap with one line.
- (void)drawSeparatorsFrom:(NSInteger)first {
  NSInteger last = first;
  while ([self isSeparator:last + 1]) {
    ++last;
  }
  td::draw_separator(NSUnionRect([self rectOfRow:first], [self rectOfRow:last]));
}

- (void)drawRow:(NSInteger)row {
  if ([self isSeparator:row]) {
    if (![self isSeparator:row - 1]) {
      [self drawSeparatorsFrom:row];
    }
    return;
  }
  if (row == _highlighted) {
    [highlight_colour() set];
    NSRectFill([self rectOfRow:row]);
  }
  td::draw_item([_shownMenu itemAtIndex:row], [self rectOfRow:row]);
}

- (void)drawRect:(NSRect)rect {
  [background_colour() set];
  NSRectFill([self bounds]);
  for (NSInteger row = 0; row < [_shownMenu numberOfItems]; ++row) {
    [self drawRow:row];
  }
  for (const int direction : {-1, 1}) {
    const NSRect strip = [self stripAtEnd:direction];
    if (!NSIsEmptyRect(strip)) {
      draw_strip(strip, direction);
    }
  }
  [edge_colour() set];
  NSFrameRect([self bounds]);
}

@end
