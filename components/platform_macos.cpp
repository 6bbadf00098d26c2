#include "platform.h"

#include <array>
#include <string>

#include <fcntl.h>
#include <sys/param.h>

namespace standin {

const char *descriptor_folder() {
  return "/dev/fd";
}

std::string descriptor_target(int descriptor) {
  std::array<char, MAXPATHLEN> target{};
  return fcntl(descriptor, F_GETPATH, target.data()) == 0 ? target.data() : "";
}

} // namespace standin
