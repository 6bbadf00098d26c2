#include "menu/menu_keys.h"

#include "menu/menu_view.h"
#include "x11/keyboard.h"

#import <GNUstepGUI/GSDisplayServer.h>

namespace {

_XDisplay *display() {
  return static_cast<_XDisplay *>([GSCurrentServer() serverDevice]);
}

/// "Alt" for "Alt_L" and "Alt_R"; nil for no key.
NSString *modifier_name(NSString *key) {
  if ([key isEqualToString:@"NoSymbol"]) {
    return nil;
  }
  NSString *name = [[key componentsSeparatedByString:@"_"] objectAtIndex:0];
  return [name isEqualToString:@"Control"] ? @"Ctrl" : name;
}

/// The key that GNUstep takes as Command; nil if the user has configured it away.
NSString *command_name() {
  NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
  NSString *first = [defaults stringForKey:@"GSFirstCommandKey"];
  NSString *name = modifier_name(first ? first : @"Alt_L");
  return name ? name : modifier_name([defaults stringForKey:@"GSSecondCommandKey"]);
}

bool is_printable_ascii(NSString *text) {
  return [text length] == 1 && [text characterAtIndex:0] > ' ' && [text characterAtIndex:0] <= '~';
}

bool can_be_typed(NSString *key) {
  return is_printable_ascii(key) && td::has_key_for(display(), [key UTF8String][0]);
}

/// What the key types without modifiers, in small letters. GNUstep has a control character in its
/// place while Control is pressed.
NSString *typed_text(NSEvent *event) {
  NSString *typed = [[event charactersIgnoringModifiers] lowercaseString];
  if (is_printable_ascii(typed)) {
    return typed;
  }
  const char ascii = td::ascii_on_key(display(), [event keyCode]);
  return ascii ? [NSString stringWithFormat:@"%c", ascii] : typed;
}

} // namespace

namespace td {

NSString *key_name(NSMenuItem *item) {
  NSString *key = [item keyEquivalent];
  const NSUInteger mask = [item keyEquivalentModifierMask];
  NSString *command = mask & NSCommandKeyMask ? command_name() : @"";
  if (!can_be_typed(key) || !command) {
    return @"";
  }
  return [NSString stringWithFormat:@"%@%@%@%@%@", mask & NSControlKeyMask ? @"Ctrl+" : @"",
                                    command, [command length] ? @"+" : @"",
                                    mask & NSShiftKeyMask ? @"Shift+" : @"", [key uppercaseString]];
}

NSMenuItem *item_for_key(NSMenu *menu, NSEvent *event) {
  NSString *typed = typed_text(event);
  for (NSMenuItem *item in [menu itemArray]) {
    const NSUInteger mask = [item keyEquivalentModifierMask];
    if ([typed length] && [[item keyEquivalent] isEqualToString:typed] &&
        ([event modifierFlags] & mask) == mask && selectable(item)) {
      return item;
    }
  }
  return nil;
}

} // namespace td
