// The scripted interface as part of a launcher, in place of the real one.

#include "interface.h"
#include "scripted.h"

void platform::start_interface_search(const std::string & /*directory*/) {
  scripted::prepare();
}

platform::RunFunction platform::find_interface(const std::string & /*directory*/,
                                               const std::atomic<bool> & /*running*/) {
  scripted::load();
  return scripted::is_available() ? scripted::run : nullptr;
}
