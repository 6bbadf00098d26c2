/// Which process listens on a port. For each system a file listening_*.cpp implements it; the build
/// chooses.
#pragma once

#include <cstdint>

#include <sys/types.h>

/// Whether other processes alone listen on the TCP port `port`, by IPv4 or IPv6: not the process
/// `root`, no descendant of it, and no process that may be a descendant whose parent has ended.
/// False if that is not certain, because one of these cannot be examined, no listener is visible,
/// or `root` has ended.
bool only_others_listen(pid_t root, std::uint16_t port);
