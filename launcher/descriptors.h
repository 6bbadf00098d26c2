/// This process's descriptors as its parent handed them over.
#pragma once

#include <string>

/// Opens /dev/null on each of the descriptors 0, 1 and 2 that is closed, so that no file or
/// connection opened later gets such a number and with it the program's texts. Call it before
/// anything is opened.
void open_closed_standard_streams();

/// The highest number listed in `folder`, which the system fills with one entry for each open
/// descriptor of this process, and some more for what other threads may open meanwhile. 65535 when
/// the folder cannot be read.
int highest_listed_descriptor(const std::string &folder);
