/// What an all-in-one run prints while it starts.
#pragma once

#include "command_line.h"

#include <string>

/// The product's name and its version.
void print_title(const char *version);

/// The dashboard's address, the components that were asked for (whether or not they started), and
/// how to stop them.
void print_banner(const std::string &url, const Options &options);

/// A note that the components share the terminal.
void print_verbose_note();
