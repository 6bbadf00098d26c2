#include "descriptors.h"

#include "folder_entries.h"

#include <algorithm>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int margin = 64;
constexpr int assumed_highest_descriptor = 65535;

} // namespace

void open_closed_standard_streams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) == -1) {
      // Gets this number, the lowest that is free.
      (void)open("/dev/null", O_RDWR);
    }
  }
}

int highest_listed_descriptor(const std::string &folder) {
  int highest = STDERR_FILENO;
  const bool listed = for_each_entry(folder, [&](const char *name) {
    highest = std::max(highest, std::atoi(name)); // "." and ".." give 0
  });
  return listed ? highest + margin : assumed_highest_descriptor;
}
