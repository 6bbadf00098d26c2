// The scripted interface as part of a launcher, in place of what the launcher has otherwise.

#include "platform.h"
#include "scripted.h"

platform::RunFunction platform::find_interface(const std::string & /*directory*/) {
  return scripted::is_available() ? scripted::run : nullptr;
}
