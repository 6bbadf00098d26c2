/// An alert shown by osascript, which every Mac has.
#pragma once

#include <string>

/// The shell command that shows `message` in a critical alert headed "Tandrel". Backslashes and
/// double quotes are escaped for the script; for the shell see platform::alert_command().
std::string osascript_command(const std::string &message);
