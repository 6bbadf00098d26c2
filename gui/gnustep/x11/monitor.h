/// The monitors that make up the screen.
#pragma once

#import <AppKit/AppKit.h>

namespace td {

/// The frame of the monitor that shows most of `place`, else of the one nearest to it. Both in
/// screen coordinates, whose origin is the bottom left of all monitors together. Main thread only.
NSRect monitor_of(NSRect place);

} // namespace td
