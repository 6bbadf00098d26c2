/// The alert by the scripting tool that every Mac has.
#pragma once

#include <string>

/// The shell command for the alert: `message` as the text of a critical alert headed
/// "Tandrel", with backslashes and double quotes escaped for the script. No single quote in it.
std::string osascript_command(const std::string &message);
