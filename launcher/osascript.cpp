#include "osascript.h"

std::string osascript_command(const std::string &message) {
  std::string escaped;
  for (const char c : message) {
    if (c == '\\' || c == '"') {
      escaped += '\\';
    }
    escaped += c;
  }
  return R"(osascript -e 'display alert "Tandrel" message ")" + escaped +
         R"(" as critical' >/dev/null 2>&1)";
}
