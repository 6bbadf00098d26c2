/// The texts of a menu item as they are drawn.
#pragma once

#import <AppKit/AppKit.h>

namespace td {

/// The item's attributed title, or its plain one, with the menu font and the colour of an enabled
/// or disabled item wherever it names none itself. Autoreleased.
NSAttributedString *shown_title(NSMenuItem *item);

/// The item's key equivalent in words, "Alt+O"; empty when it has none. GNUstep's Command key is
/// Alt unless the user chose another. Autoreleased.
NSAttributedString *shown_key(NSMenuItem *item);

} // namespace td
