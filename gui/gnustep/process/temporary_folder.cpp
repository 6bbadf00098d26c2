#include "process/temporary_folder.h"

#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char *usual_folder = "/tmp";

bool is_usable(const char *folder) {
  struct stat facts = {};
  return folder != nullptr && stat(folder, &facts) == 0 && S_ISDIR(facts.st_mode) &&
         access(folder, W_OK | X_OK) == 0;
}

} // namespace

namespace td {

std::string temporary_folder() {
  const char *candidates[] = {std::getenv("TEMP"), std::getenv("TMP"), std::getenv("TMPDIR"),
                              usual_folder, std::getenv("XDG_RUNTIME_DIR")};
  for (const char *folder : candidates) {
    if (is_usable(folder)) {
      return folder;
    }
  }
  return usual_folder;
}

} // namespace td
