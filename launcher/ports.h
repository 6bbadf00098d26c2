/// The two ports of a run, and which the user may choose.
#pragma once

#include <cstdint>

constexpr int highest_port = 65535;

struct Ports {
  std::uint16_t http = 4466; ///< dashboard
  std::uint16_t udp = 4465;  ///< hub control
};

/// Why the user cannot have these ports, as a text to show; null when nothing speaks against them.
/// Whether they are free is not asked.
const char *check_ports(int http, int udp);
