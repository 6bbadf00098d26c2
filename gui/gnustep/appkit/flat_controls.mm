// GNUstep's theme draws buttons, fields and the keyboard focus with grey bevels and dots. They are
// drawn flat here, in the colours of the menu.

#include "runtime/replace_method.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSTheme.h>

namespace {

constexpr CGFloat corner_radius = 3;

IMP g_draw_border;

NSColor *line_colour() {
  return [NSColor colorWithCalibratedWhite:0.62 alpha:1];
}

/// Marks the button that Return presses, and what has the keyboard focus.
NSColor *accent_colour() {
  return [NSColor colorWithCalibratedRed:0.25 green:0.52 blue:0.85 alpha:1];
}

bool is_pressed(GSThemeControlState state) {
  return state == GSThemeHighlightedState || state == GSThemeHighlightedFirstResponderState ||
         state == GSThemeSelectedState || state == GSThemeSelectedFirstResponderState;
}

bool is_default(NSCell *cell) {
  return [cell isKindOfClass:[NSButtonCell class]] &&
         [[static_cast<NSButtonCell *>(cell) keyEquivalent] isEqualToString:@"\r"];
}

NSColor *face_colour(bool is_default, bool pressed) {
  if (is_default) {
    return pressed ? [NSColor colorWithCalibratedRed:0.68 green:0.80 blue:0.95 alpha:1]
                   : [NSColor colorWithCalibratedRed:0.80 green:0.88 blue:0.98 alpha:1];
  }
  return [NSColor colorWithCalibratedWhite:pressed ? 0.82 : 0.93 alpha:1];
}

/// A line of one pixel just inside the frame.
NSBezierPath *outline(NSRect frame) {
  return [NSBezierPath bezierPathWithRoundedRect:NSInsetRect(frame, 0.5, 0.5)
                                         xRadius:corner_radius
                                         yRadius:corner_radius];
}

// The replaced methods' arguments. NOLINTBEGIN(bugprone-easily-swappable-parameters)

void draw_button(id /*theme*/, SEL /*selector*/, NSRect frame, NSCell *cell, NSView * /*view*/,
                 int /*style*/, GSThemeControlState state) {
  NSBezierPath *edge = outline(frame);
  [face_colour(is_default(cell), is_pressed(state)) set];
  [edge fill];
  [(is_default(cell) ? accent_colour() : line_colour()) set];
  [edge stroke];
}

/// A text field's border is of the type for bezels.
void draw_border(id theme, SEL selector, NSBorderType type, NSRect frame, NSView *view) {
  if (type != NSBezelBorder) {
    return reinterpret_cast<void (*)(id, SEL, NSBorderType, NSRect, id)>(g_draw_border)(
        theme, selector, type, frame, view);
  }
  const bool is_edited =
      [view isKindOfClass:[NSControl class]] && [static_cast<NSControl *>(view) currentEditor];
  [[NSColor textBackgroundColor] set];
  [outline(frame) fill];
  [(is_edited ? accent_colour() : line_colour()) set];
  [outline(frame) stroke];
}

void draw_focus(id /*theme*/, SEL /*selector*/, NSRect /*frame*/, NSView *view) {
  [accent_colour() set];
  [outline(NSInsetRect([view bounds], 2, 2)) stroke]; // the frame is nearer to two of the sides
}

// NOLINTEND(bugprone-easily-swappable-parameters)

} // namespace

@interface GSTheme (TDFlatControls)
@end

@implementation GSTheme (TDFlatControls)

+ (void)load {
  Class theme = objc_getClass("GSTheme");
  td::replace_method(theme, @selector(drawButton:in:view:style:state:),
                     reinterpret_cast<IMP>(draw_button));
  g_draw_border = td::replace_method(theme, @selector(drawBorderType:frame:view:),
                                     reinterpret_cast<IMP>(draw_border));
  td::replace_method(theme, @selector(drawFocusFrame:view:), reinterpret_cast<IMP>(draw_focus));
}

@end
