/// This machine's address on the local network.
#pragma once

#include <string>

struct ifaddrs; // NOLINT(readability-identifier-naming): the system's name

/// The dotted-quad IPv4 address by which other machines on the local network reach this one;
/// "127.0.0.1" when there is none.
std::string td_lan_ipv4();

/// The choice that td_lan_ipv4 makes: of the interfaces that are up, the first private address
/// (10/8, 172.16/12, 192.168/16), else the first other one that is neither loopback nor link-local,
/// else "127.0.0.1". `list` may be null and stays the caller's.
std::string choose_lan_ipv4(const ifaddrs *list);
