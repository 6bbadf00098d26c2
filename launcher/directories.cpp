#include "directories.h"

#include "platform.h"

#include <cstdlib>
#include <string_view>

#include <sys/stat.h>

namespace {

constexpr std::string_view bundle_ending = "/Contents/MacOS/";
constexpr mode_t folder_mode = 0755;

bool ends_with(std::string_view text, std::string_view ending) {
  return text.size() >= ending.size() && text.substr(text.size() - ending.size()) == ending;
}

/// Makes the folder if it is missing; true when it is there now. Why mkdir failed does not matter:
/// EEXIST is the normal case, and after any other failure stat finds no folder.
bool make_folder(const std::string &path) {
  mkdir(path.c_str(), folder_mode);
  struct stat info = {};
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

} // namespace

namespace td {

std::string executable_dir() {
  return directory_of(platform::executable_path());
}

std::string directory_of(const std::string &executable_path) {
  const std::size_t slash = executable_path.rfind('/');
  return slash == std::string::npos ? "./" : executable_path.substr(0, slash + 1);
}

std::string config_dir() {
  return config_dir_for(executable_dir(), std::getenv("HOME"));
}

std::string config_dir_for(const std::string &exe, const char *home) {
  if (ends_with(exe, bundle_ending) && home != nullptr && *home != '\0') {
    const std::string base = std::string(home) + "/Library/Application Support";
    const std::string dir = base + "/Tandrel";
    make_folder(base);
    if (make_folder(dir)) {
      return dir + "/";
    }
  }
  if (make_folder(exe + "config")) {
    return exe + "config/";
  }
  return exe;
}

} // namespace td
