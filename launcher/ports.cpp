#include "ports.h"

// The order of the dialog. NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
const char *check_ports(int http, int udp) {
  constexpr int lowest_unprivileged_port = 1024;
  if (http < 1 || http > highest_port || udp < 1 || udp > highest_port) {
    return "Ports must be between 1 and 65535.";
  }
  if (http == udp) {
    return "The dashboard and control ports must be different.";
  }
  if (http < lowest_unprivileged_port || udp < lowest_unprivileged_port) {
    return "Ports below 1024 need administrator privileges; pick higher ones.";
  }
  return nullptr;
}
