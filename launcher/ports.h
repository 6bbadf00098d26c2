/// The two ports of a run, and which the user may choose.
#pragma once

#include <cstdint>

constexpr int highest_port = 65535;

struct Ports {
  std::uint16_t http = 4466; ///< dashboard
  std::uint16_t udp = 4465;  ///< hub control
};

/// Why the user cannot have these ports, as a text to show; null if they are acceptable. Does
/// not check whether they are free.
const char *check_ports(int http, int udp);
