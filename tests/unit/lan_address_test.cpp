#include "lan_address.h"

#include <deque>
#include <string>

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

namespace {

/// An interface list as the system gives it. Entries are linked in the order they are added.
struct InterfaceList {
  std::deque<ifaddrs> entries;
  std::deque<sockaddr_in> addresses;
  std::deque<sockaddr_in6> other_addresses;

  InterfaceList &add(const char *address, unsigned flags = IFF_UP) {
    sockaddr_in &ipv4 = addresses.emplace_back();
    ipv4.sin_family = AF_INET;
    EXPECT_EQ(inet_pton(AF_INET, address, &ipv4.sin_addr), 1) << address;
    return link(reinterpret_cast<sockaddr *>(&ipv4), flags);
  }
  InterfaceList &add_ipv6(const char *address) {
    sockaddr_in6 &ipv6 = other_addresses.emplace_back();
    ipv6.sin6_family = AF_INET6;
    EXPECT_EQ(inet_pton(AF_INET6, address, &ipv6.sin6_addr), 1) << address;
    return link(reinterpret_cast<sockaddr *>(&ipv6), IFF_UP);
  }
  InterfaceList &add_without_address() { return link(nullptr, IFF_UP); }

  InterfaceList &link(sockaddr *address, unsigned flags) {
    ifaddrs &entry = entries.emplace_back();
    entry.ifa_addr = address;
    entry.ifa_flags = flags;
    if (entries.size() > 1) {
      entries[entries.size() - 2].ifa_next = &entry;
    }
    return *this;
  }

  [[nodiscard]] std::string choice() const {
    return choose_lan_ipv4(entries.empty() ? nullptr : &entries.front());
  }
};

std::string choice_of(std::initializer_list<const char *> addresses) {
  InterfaceList list;
  for (const char *address : addresses) {
    list.add(address);
  }
  return list.choice();
}

TEST(ChooseLanIpv4, WithoutANetworkIsLoopback) {
  EXPECT_EQ(choice_of({}), "127.0.0.1");
  EXPECT_EQ(choice_of({"127.0.0.1", "127.255.0.9"}), "127.0.0.1");
  EXPECT_EQ(choice_of({"127.0.0.1", "169.254.3.4"}), "127.0.0.1");
}

TEST(ChooseLanIpv4, PrefersTheFirstPrivateAddress) {
  EXPECT_EQ(choice_of({"127.0.0.1", "100.64.0.7", "192.168.1.20", "10.0.0.5"}), "192.168.1.20");
  EXPECT_EQ(choice_of({"10.0.0.5", "192.168.1.20"}), "10.0.0.5");
  EXPECT_EQ(choice_of({"203.0.113.9", "192.168.7.7", "192.168.7.8"}), "192.168.7.7");
  EXPECT_EQ(InterfaceList().add("192.168.7.7", IFF_UP | IFF_LOOPBACK).add("10.0.0.5").choice(),
            "192.168.7.7")
      << "the address decides, not the kind of interface";
}

TEST(ChooseLanIpv4, ElseTakesTheFirstOther) {
  EXPECT_EQ(choice_of({"169.254.3.4", "203.0.113.9", "198.51.100.1"}), "203.0.113.9");
  EXPECT_EQ(choice_of({"169.254.3.4", "169.253.3.4"}), "169.253.3.4");
  EXPECT_EQ(choice_of({"127.1.2.3", "128.0.0.1"}), "128.0.0.1");
  EXPECT_EQ(choice_of({"100.64.0.7"}), "100.64.0.7");
}

TEST(ChooseLanIpv4, KnowsTheEdgesOfEachNetwork) {
  constexpr const char *other = "203.0.113.9";
  for (const char *is_private : {"10.0.0.0", "10.255.255.255", "172.16.0.0", "172.31.255.1",
                                 "172.31.255.255", "192.168.0.0", "192.168.255.255"}) {
    EXPECT_EQ(choice_of({other, is_private}), is_private);
  }
  for (const char *is_other : {"9.255.255.255", "11.0.0.0", "172.15.255.255", "172.32.0.1",
                               "192.167.255.255", "192.169.0.0"}) {
    EXPECT_EQ(choice_of({other, is_other}), other);
  }
  for (const char *is_usable : {"126.255.255.255", "128.0.0.1", "169.253.255.255", "169.255.0.0"}) {
    EXPECT_EQ(choice_of({is_usable}), is_usable);
  }
  for (const char *is_not : {"127.0.0.0", "127.255.255.255", "169.254.0.0", "169.254.255.255"}) {
    EXPECT_EQ(choice_of({is_not, other}), other);
  }
}

TEST(ChooseLanIpv4, SkipsWhatIsDownOrNoIpv4) {
  EXPECT_EQ(InterfaceList().add("192.168.1.20", 0).add("203.0.113.9").choice(), "203.0.113.9");
  EXPECT_EQ(InterfaceList().add("192.168.1.20", 0).choice(), "127.0.0.1");
  EXPECT_EQ(InterfaceList().add_without_address().add_ipv6("::1").choice(), "127.0.0.1");
  EXPECT_EQ(InterfaceList().add_ipv6("fd00::1").choice(), "127.0.0.1");
  EXPECT_EQ(InterfaceList().add_ipv6("fd00::1").add_without_address().add("10.1.2.3").choice(),
            "10.1.2.3");
}

TEST(LanIpv4, IsADottedQuad) {
  EXPECT_THAT(td_lan_ipv4(), testing::MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+\\.[0-9]+"));
}

} // namespace
