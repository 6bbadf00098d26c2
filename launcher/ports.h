/// The two ports of a run.
#pragma once

#include <cstdint>

constexpr int highest_port = 65535;

struct Ports {
  std::uint16_t http = 4466; ///< dashboard
  std::uint16_t udp = 4465;  ///< hub control
};
