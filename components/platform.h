/// What the stand-ins need that each system spells its own way.
#pragma once

#include <string>

namespace standin {

/// The folder that lists this process's open descriptors by number.
const char *descriptor_folder();

/// What `descriptor` is open on, as the system names it; empty when it is closed or has no name.
std::string descriptor_target(int descriptor);

} // namespace standin
