#include "settings.h"

#include "directories.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>

namespace {

constexpr std::size_t bytes_read = 511;

/// The first colon at or after the first `key`, which may belong to a later entry; null when there
/// is no such key or colon.
const char *colon_after(const std::string &text, const char *key) {
  const char *found = std::strstr(text.c_str(), key);
  return found == nullptr ? nullptr : std::strchr(found, ':');
}

std::uint16_t parse_port(const std::string &text, const char *key, std::uint16_t default_value) {
  const char *colon = colon_after(text, key);
  // Unlike atoi(), strtol() turns what exceeds its type into the highest value, not into another.
  const long value = colon == nullptr ? 0 : std::strtol(colon + 1, nullptr, 10);
  return value >= 1 && value <= highest_port ? static_cast<std::uint16_t>(value) : default_value;
}

bool parse_open_browser(const std::string &text, bool default_value) {
  const char *colon = colon_after(text, "\"open_browser\"");
  if (colon == nullptr) {
    return default_value;
  }
  // Tabs, spaces and colons, but not line feeds.
  const char *value = colon + std::strspn(colon, "\t :");
  return std::strncmp(value, "false", 5) != 0;
}

/// Opens the settings file; null when that fails, or when what is at `path` is not a regular file:
/// opening a FIFO would wait for somebody at its other end.
std::FILE *open_settings(const std::string &path, const char *mode) {
  struct stat info = {};
  const bool other_kind = stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode);
  return other_kind ? nullptr : std::fopen(path.c_str(), mode);
}

} // namespace

Settings parse_settings(std::string_view bytes, bool open_browser) {
  // From here on the text ends at its first NUL, as the C functions see it.
  const std::string text(bytes.substr(0, bytes_read));
  Settings settings;
  settings.ports.http = parse_port(text, "\"http_port\"", settings.ports.http);
  settings.ports.udp = parse_port(text, "\"udp_port\"", settings.ports.udp);
  settings.open_browser = parse_open_browser(text, open_browser);
  return settings;
}

std::string format_settings(const Settings &settings) {
  return "{\n  \"http_port\": " + std::to_string(settings.ports.http) +
         ",\n  \"udp_port\": " + std::to_string(settings.ports.udp) +
         ",\n  \"open_browser\": " + (settings.open_browser ? "true" : "false") + "\n}\n";
}

std::string settings_path() {
  return td::config_dir() + "launcher.json";
}

Settings read_settings(const std::string &path, bool open_browser) {
  std::array<char, bytes_read> bytes{};
  std::size_t size = 0;
  if (std::FILE *file = open_settings(path, "rb")) {
    size = std::fread(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
  }
  return parse_settings({bytes.data(), size}, open_browser);
}

void write_settings(const std::string &path, const Settings &settings) {
  if (std::FILE *file = open_settings(path, "wb")) {
    const std::string text = format_settings(settings);
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
  }
}
