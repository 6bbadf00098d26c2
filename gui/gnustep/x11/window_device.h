/// The X window behind a window of GNUstep's.
#pragma once

#import <AppKit/AppKit.h>

struct _XDisplay; // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Xlib's

namespace td {

/// The connection that GNUstep has to the X server; it keeps owning it.
_XDisplay *display_of(NSWindow *window);

/// The X window's id; there is one once the window has been made without deferring.
unsigned long x_window_of(NSWindow *window);

} // namespace td
