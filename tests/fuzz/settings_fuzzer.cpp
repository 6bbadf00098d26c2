/// The input is the settings file; one of five bytes is also the settings that are written.
#include "fuzzer.h"
#include "independent_settings.h"
#include "settings.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include <sys/mman.h>
#include <unistd.h>

namespace {

/// A file that is in no folder and ends with this process.
class PrivateFile {
public:
  const std::string &path() const { return m_path; }

  void fill(std::string_view bytes) const {
    const bool filled =
        ftruncate(m_descriptor, 0) == 0 &&
        pwrite(m_descriptor, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size());
    expect_equal("(The fuzzer's own file can be written.)", true, filled);
  }

  std::string contents() const {
    std::array<char, 2048> bytes{};
    const ssize_t size = pread(m_descriptor, bytes.data(), bytes.size(), 0);
    return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
  }

private:
  const int m_descriptor = memfd_create("settings", MFD_CLOEXEC);
  const std::string m_path = "/proc/self/fd/" + std::to_string(m_descriptor);
};

void check_same(const Settings &expected, const Settings &got) {
  expect_equal<int>("The dashboard port is the number after the first colon after the first "
                    "\"http_port\" of the first 511 bytes, if it is in 1 to 65535; otherwise 4466.",
                    expected.ports.http, got.ports.http);
  expect_equal<int>("The control port is the number after the first colon after the first "
                    "\"udp_port\" of the first 511 bytes, if it is in 1 to 65535; otherwise 4465.",
                    expected.ports.udp, got.ports.udp);
  expect_equal("Only false after the first colon after the first \"open_browser\" and after tabs, "
               "spaces and colons turns the browser off; without a colon the preference stays.",
               expected.open_browser, got.open_browser);
}

void check_reading(std::string_view bytes, const PrivateFile &file) {
  for (const bool open_browser : {false, true}) {
    check_same(read_independently(bytes, open_browser), parse_settings(bytes, open_browser));
  }
  if (bytes.size() % 8 == 7) { // not always: files are slow
    file.fill(bytes);
    check_same(read_independently(bytes, false), read_settings(file.path(), false));
  }
}

std::uint16_t number_at(std::string_view input, std::size_t at) {
  const auto high = static_cast<unsigned char>(input[at]);
  const auto low = static_cast<unsigned char>(input[at + 1]);
  return static_cast<std::uint16_t>(high * 256U + low);
}

void check_writing(const Settings &settings, const PrivateFile &file) {
  std::array<char, 100> expected{};
  (void)std::snprintf(expected.data(), expected.size(),
                      "{\n  \"http_port\": %u,\n  \"udp_port\": %u,\n  \"open_browser\": %s\n}\n",
                      static_cast<unsigned>(settings.ports.http),
                      static_cast<unsigned>(settings.ports.udp),
                      settings.open_browser ? "true" : "false");
  write_settings(file.path(), settings);
  const std::string text = file.contents();
  expect_equal<std::string_view>("The file is written with three keys in five lines, and nothing "
                                 "of the earlier one is left.",
                                 expected.data(), text);
  Settings same = settings;
  same.ports.http = same.ports.http == 0 ? Ports{}.http : same.ports.http;
  same.ports.udp = same.ports.udp == 0 ? Ports{}.udp : same.ports.udp;
  check_same(same, read_settings(file.path(), !settings.open_browser));
}

} // namespace

void check(std::string_view input) {
  static const PrivateFile file;
  check_reading(input, file);
  // Again, with the middle of the input at the end of what is read.
  check_reading(std::string(511 - std::min<std::size_t>(511, input.size() / 2), ' ').append(input),
                file);
  if (input.size() == 5) {
    check_writing({{number_at(input, 0), number_at(input, 2)}, input[4] % 2 == 0}, file);
  }
}
