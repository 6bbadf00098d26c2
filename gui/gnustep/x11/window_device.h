/// The X display and window of a GNUstep window.
#pragma once

#import <AppKit/AppKit.h>

struct _XDisplay; // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Xlib's

namespace td {

/// GNUstep's connection to the X server. GNUstep owns it.
_XDisplay *display_of(NSWindow *window);

/// The id of the X window. `window` must have been made without deferring.
unsigned long x_window_of(NSWindow *window);

} // namespace td
