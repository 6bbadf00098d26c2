#include "interface.h"

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>

namespace {

/// Whether this process can reach the window server. Where it cannot, AppKit ends the process. The
/// attributes of the security session would be wrong: they depend on how the user logged in, so a
/// login by ssh has none for graphics, although AppKit works there if its user is logged in at the
/// screen, too.
bool has_graphic_session() {
  const CFDictionaryRef session = CGSessionCopyCurrentDictionary();
  if (session == nullptr) {
    return false;
  }
  CFRelease(session);
  return true;
}

} // namespace

namespace platform {

void start_interface_search(const std::string & /*directory*/) {}

RunFunction find_interface(const std::string & /*directory*/,
                           const std::atomic<bool> & /*running*/) {
  return has_graphic_session() ? tdgui::run : nullptr;
}

} // namespace platform
