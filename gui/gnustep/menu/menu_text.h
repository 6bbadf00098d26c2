/// The texts of a menu item as they are drawn.
#pragma once

#import <AppKit/AppKit.h>

namespace td {

/// The item's attributed title or, if it has none, its plain title. Where it sets no font or colour
/// it gets the menu font and the colour of an enabled or disabled item. Autoreleased.
NSAttributedString *shown_title(NSMenuItem *item);

/// The item's key equivalent by its key_name. Autoreleased.
NSAttributedString *shown_key(NSMenuItem *item);

} // namespace td
