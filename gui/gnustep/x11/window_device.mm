#include "x11/window_device.h"

#import <GNUstepGUI/GSDisplayServer.h>

namespace td {

_XDisplay *display_of(NSWindow *window) {
  return static_cast<_XDisplay *>([GSServerForWindow(window) serverDevice]);
}

unsigned long x_window_of(NSWindow *window) {
  return reinterpret_cast<unsigned long>(
      [GSServerForWindow(window) windowDevice:static_cast<int>([window windowNumber])]);
}

} // namespace td
