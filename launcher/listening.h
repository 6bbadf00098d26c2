/// Whose socket answers on a port. One file implements it for each system; the build chooses.
#pragma once

#include <cstdint>

#include <sys/types.h>

/// Whether it is certain that somebody else listens on TCP port `port`, by IPv4 or IPv6: neither
/// the process `root` nor a descendant of it does, nor one that may be a descendant whose parent
/// has ended, and every one of these processes could be examined. False whenever that is not known,
/// also when `root` has ended.
bool certainly_not_listening(pid_t root, std::uint16_t port);
