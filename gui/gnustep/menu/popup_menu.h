/// A menu that pops up at a status item.
#pragma once

#import <AppKit/AppKit.h>

namespace td {

/// Has the menu's delegate fill it, opens it below or above `anchor` (screen coordinates), lets the
/// user choose, closes it, and then performs the chosen item's action. Returns after that. Main
/// thread only.
void pop_up_menu(NSMenu *menu, NSRect anchor);

} // namespace td
