#include "lan_address.h"

#include <array>
#include <cstdint>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

namespace {

/// Whether an IPv4 address, in host byte order, lies in the network of `prefix`/`bits`.
bool lies_in(std::uint32_t address, std::uint32_t prefix, unsigned bits) {
  return (address ^ prefix) >> (32U - bits) == 0;
}

bool is_reachable(std::uint32_t address) {
  return !lies_in(address, 0x7F000000, 8) && !lies_in(address, 0xA9FE0000, 16);
}

bool is_private(std::uint32_t address) {
  return lies_in(address, 0xC0A80000, 16) || lies_in(address, 0x0A000000, 8) ||
         lies_in(address, 0xAC100000, 12);
}

/// The entry's IPv4 address; null when it has none or its interface is down.
const in_addr *usable_ipv4(const ifaddrs &entry) {
  const bool usable = entry.ifa_addr != nullptr && entry.ifa_addr->sa_family == AF_INET &&
                      (entry.ifa_flags & IFF_UP) != 0;
  return usable ? &reinterpret_cast<const sockaddr_in *>(entry.ifa_addr)->sin_addr : nullptr;
}

} // namespace

std::string choose_lan_ipv4(const ifaddrs *list) {
  std::string private_address;
  std::string other_address;
  for (const ifaddrs *entry = list; entry != nullptr; entry = entry->ifa_next) {
    const in_addr *ipv4 = usable_ipv4(*entry);
    if (ipv4 == nullptr || !is_reachable(ntohl(ipv4->s_addr))) {
      continue;
    }
    std::array<char, INET_ADDRSTRLEN> text{};
    if (inet_ntop(AF_INET, ipv4, text.data(), text.size()) == nullptr) {
      continue;
    }
    std::string &candidate = is_private(ntohl(ipv4->s_addr)) ? private_address : other_address;
    if (candidate.empty()) {
      candidate = text.data();
    }
  }
  if (!private_address.empty()) {
    return private_address;
  }
  return other_address.empty() ? "127.0.0.1" : other_address;
}

std::string td_lan_ipv4() {
  ifaddrs *list = nullptr;
  if (getifaddrs(&list) != 0) {
    return choose_lan_ipv4(nullptr);
  }
  std::string address = choose_lan_ipv4(list);
  freeifaddrs(list);
  return address;
}
