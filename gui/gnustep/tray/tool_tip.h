/// The icon's tool tip.
#pragma once

#include "x11/picture_window.h"

#import <AppKit/AppKit.h>

namespace td {

/// Shows `text` in a window below `icon`, or above it where there is no room below; on `monitor`.
/// All in pixels of the screen. The tool tip is there until the window is destroyed.
std::unique_ptr<PictureWindow> show_tool_tip(Connection &connection, NSString *text,
                                             ScreenRect icon, ScreenRect monitor);

} // namespace td
