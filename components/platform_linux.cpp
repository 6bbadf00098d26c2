#include "platform.h"

#include <array>
#include <climits>
#include <cstddef>
#include <string>

#include <unistd.h>

namespace standin {

const char *descriptor_folder() {
  return "/proc/self/fd";
}

std::string descriptor_target(int descriptor) {
  const std::string link = std::string(descriptor_folder()) + "/" + std::to_string(descriptor);
  std::array<char, PATH_MAX> target{};
  const ssize_t length = readlink(link.c_str(), target.data(), target.size());
  return length < 0 ? "" : std::string(target.data(), static_cast<std::size_t>(length));
}

} // namespace standin
