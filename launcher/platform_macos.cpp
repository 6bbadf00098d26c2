#include "descriptors.h"
#include "osascript.h"
#include "platform.h"

#include <array>
#include <cstdint>

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <mach-o/dyld.h>
#include <unistd.h>

namespace {

/// Whether this process can reach the window server. Where it cannot, AppKit ends the process. The
/// attributes of the security session would not do: they tell how the user logged in, so a login by
/// ssh has none for graphics even while AppKit works there because its user is at the screen, too.
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

std::string executable_path() {
  std::array<char, 4096> path{};
  auto size = static_cast<std::uint32_t>(path.size());
  return _NSGetExecutablePath(path.data(), &size) == 0 ? path.data() : "";
}

int highest_descriptor() {
  return highest_listed_descriptor("/dev/fd");
}

void close_descriptors(int first, int last) {
  for (int descriptor = first; descriptor <= last; ++descriptor) {
    close(descriptor); // EBADF for every number that is not open
  }
}

void end_with_parent(pid_t /*parent*/) {
  // No such call here. launchd ends what is left of a job's process group by itself.
}

std::string browser_command(const std::string &url) {
  return "open \"" + url + "\"";
}

std::string alert_command(const std::string &message) {
  return osascript_command(message);
}

RunFunction find_interface(const std::string & /*directory*/) {
  return has_graphic_session() ? tdgui::run : nullptr;
}

} // namespace platform
