/// The icon that desktops show for a window.
#pragma once

#import <AppKit/AppKit.h>

namespace td {

/// Shows `image`, which is square, in the window's title bar and in lists of windows. `window` must
/// have been made without deferring. Main thread only.
void set_window_icon(NSWindow *window, NSImage *image);

} // namespace td
