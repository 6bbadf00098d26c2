/// The descriptors that this process has inherited.
#pragma once

#include <string>

/// Opens /dev/null on each of the descriptors 0, 1 and 2 that is closed, so that no file or
/// connection opened later gets such a number and with it what the program prints. Call it before
/// anything is opened.
void open_closed_standard_streams();

/// The highest number among the entries of `folder`, one for each open descriptor of this process,
/// plus a margin for what other threads may open meanwhile. 65535 if the folder cannot be read.
int highest_listed_descriptor(const std::string &folder);
