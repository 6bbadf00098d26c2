#include "descriptors.h"
#include "osascript.h"
#include "platform.h"

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

pid_t fork_to_execute(void (*execute)(const void *argument), const void *argument,
                      bool /*can_be_suspended*/) {
  const pid_t pid = fork(); // vfork() is deprecated here
  if (pid == 0) {
    execute(argument);
  }
  return pid;
}

int highest_descriptor() {
  return highest_listed_descriptor("/dev/fd");
}

void close_descriptors(int first, int last) {
  for (int descriptor = first; descriptor <= last; ++descriptor) {
    close(descriptor); // EBADF for every number that is not open
  }
}

void end_with_parent(pid_t /*parent*/, int /*number*/) {
  // No such call here. launchd ends what is left of a job's process group by itself.
}

std::string browser_command(const std::string &url) {
  return "open \"" + url + "\"";
}

std::string alert_command(const std::string &message) {
  return osascript_command(message);
}

} // namespace platform
