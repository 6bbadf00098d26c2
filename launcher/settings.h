/// The settings that the launcher remembers between runs, as text and in their file.
///
/// The text looks like JSON and is written as JSON, but it is read by a keyword scan whose
/// leniencies are part of the format: a hand-edited file must keep its meaning.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

constexpr std::uint16_t default_http_port = 4466;
constexpr std::uint16_t default_udp_port = 4465;

struct Settings {
  std::uint16_t http_port = default_http_port; ///< dashboard
  std::uint16_t udp_port = default_udp_port;   ///< hub control
  bool open_browser = true;                    ///< open the dashboard at launch
};

/// Reads the three settings from the bytes of a settings file. Only the first 511 bytes count, and
/// of these only what precedes a NUL. A port that is missing or not in 1 to 65535 gives its
/// default; a missing preference gives `open_browser`.
Settings parse_settings(std::string_view bytes, bool open_browser);

/// The text of the settings file: three keys, five lines, at most 71 bytes.
std::string format_settings(const Settings &settings);

/// Reads the settings file at `path`. A missing, unreadable or empty one gives the defaults, with
/// the preference `open_browser`.
Settings read_settings(const std::string &path, bool open_browser);

/// Writes the settings file at `path` in place. A file that cannot be written is left at that: the
/// settings then hold for this run only.
void write_settings(const std::string &path, const Settings &settings);
