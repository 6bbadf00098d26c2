/// What an all-in-one run says on standard output while it starts.
#pragma once

#include "command_line.h"

#include <string>

/// The product's name and its version.
void print_title(const char *version);

/// Where the dashboard is, what runs (as asked for, whether or not it started) and how to end it.
void print_banner(const std::string &url, const Options &options);

/// That the components share the terminal.
void print_verbose_note();
