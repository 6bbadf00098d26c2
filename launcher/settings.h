/// The settings that the launcher remembers between runs, as text and in their file.
///
/// The text looks like JSON and is written as JSON, but it is read by a keyword scan that is
/// deliberately lenient: hand-edited files rely on it.
#pragma once

#include "ports.h"

#include <string>
#include <string_view>

struct Settings {
  Ports ports;
  bool open_browser = true; ///< open the dashboard at launch
};

/// Reads the three settings from the bytes of a settings file. Only the first 511 bytes count, and
/// of these only what precedes a NUL. A port that is missing or not in 1 to 65535 gives its
/// default; a missing preference gives `open_browser`.
Settings parse_settings(std::string_view bytes, bool open_browser);

/// The text of the settings file: three keys, five lines, at most 71 bytes.
std::string format_settings(const Settings &settings);

/// The path of the settings file: "launcher.json" in td::config_dir(), which makes the folder.
std::string settings_path();

/// Reads the settings file at `path`. A missing, unreadable or empty one, or something that is not
/// a regular file, gives the defaults, with the preference `open_browser`.
Settings read_settings(const std::string &path, bool open_browser);

/// Writes the settings file at `path` in place. Failures are not reported: the settings then hold
/// for this run only.
void write_settings(const std::string &path, const Settings &settings);
