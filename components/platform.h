/// What differs between Linux and macOS.
#pragma once

#include <string>

namespace standin {

/// The folder that has one entry for each open descriptor of this process, named by its number.
const char *descriptor_folder();

/// The path or name of what `descriptor` is open on. Empty if it is closed or has no name.
std::string descriptor_target(int descriptor);

} // namespace standin
