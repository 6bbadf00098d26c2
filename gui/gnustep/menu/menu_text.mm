#include "menu/menu_text.h"

#include "menu/menu_keys.h"

namespace {

NSColor *default_colour(NSMenuItem *item) {
  return [item isEnabled] ? [NSColor controlTextColor]
                          : [NSColor colorWithCalibratedWhite:0.45 alpha:1];
}

void add_where_absent(NSMutableAttributedString *text, NSString *name, id value) {
  NSRange run = NSMakeRange(0, 0);
  for (NSUInteger at = 0; at < [text length]; at = NSMaxRange(run)) {
    if ([text attribute:name atIndex:at effectiveRange:&run] == nil) {
      [text addAttribute:name value:value range:run];
    }
  }
}

} // namespace

namespace td {

NSAttributedString *shown_title(NSMenuItem *item) {
  NSMutableAttributedString *text = [[[item attributedTitle] mutableCopy] autorelease];
  if (text == nil) {
    text = [[[NSMutableAttributedString alloc] initWithString:[item title]] autorelease];
  }
  add_where_absent(text, NSFontAttributeName, [NSFont menuFontOfSize:0]);
  add_where_absent(text, NSForegroundColorAttributeName, default_colour(item));
  return text;
}

NSAttributedString *shown_key(NSMenuItem *item) {
  NSDictionary *attributes = [NSDictionary
      dictionaryWithObjectsAndKeys:[NSFont menuFontOfSize:0], NSFontAttributeName,
                                   default_colour(item), NSForegroundColorAttributeName, nil];
  return [[[NSAttributedString alloc] initWithString:key_name(item)
                                          attributes:attributes] autorelease];
}

} // namespace td
