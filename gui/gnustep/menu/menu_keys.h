/// The key equivalents of a menu: what they are called and what they choose.
#pragma once

#import <AppKit/AppKit.h>

namespace td {

/// The item's key equivalent as it is pressed, such as "Alt+O"; empty when it has none or the
/// keyboard cannot type it. GNUstep's Command key is Alt unless the user has configured another.
/// Autoreleased.
NSString *key_name(NSMenuItem *item);

/// The item that the pressed key chooses, or nil. While a layout with another alphabet is in use, a
/// key counts as what it types in another of the keyboard's layouts.
NSMenuItem *item_for_key(NSMenu *menu, NSEvent *event);

} // namespace td
