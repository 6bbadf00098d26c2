#include "osascript.h"
#include "platform.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include <mach-o/dyld.h>
#include <unistd.h>

namespace platform {

std::string executable_path() {
  std::array<char, 4096> path{};
  auto size = static_cast<std::uint32_t>(path.size());
  return _NSGetExecutablePath(path.data(), &size) == 0 ? path.data() : "";
}

void close_descriptors_from(int first) {
  // EBADF for every number that is not open.
  constexpr int highest_descriptor_tried = 65536; // the limit may be anything up to "unlimited"
  const int limit = std::min(getdtablesize(), highest_descriptor_tried);
  for (int descriptor = first; descriptor < limit; ++descriptor) {
    close(descriptor);
  }
}

std::string browser_command(const std::string &url) {
  return "open \"" + url + "\"";
}

std::string alert_command(const std::string &message) {
  return osascript_command(message);
}

RunFunction find_interface(const std::string & /*directory*/) {
  return tdgui::run;
}

} // namespace platform
