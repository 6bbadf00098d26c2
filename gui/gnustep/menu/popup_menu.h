/// A menu that pops up at a status item.
#pragma once

#import <AppKit/AppKit.h>

namespace td {

/// Has the menu's delegate fill it, opens it below or above `anchor` (screen coordinates), waits
/// for the user's choice, closes it and performs the chosen item's action. Main thread only.
void pop_up_menu(NSMenu *menu, NSRect anchor);

} // namespace td
