/// How a receiver or a sender tells the hub that it is there: one short datagram a second, which
/// the hub acknowledges.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace standin {

/// Time between two registrations of one program.
constexpr std::chrono::milliseconds registration_period{1000};

/// How long a registration, or the hub's word about it, counts without renewal.
constexpr std::chrono::milliseconds registration_lifetime{3000};

/// The hub's answer to a registration.
constexpr std::string_view acknowledgement = "td-standin acknowledged";

enum class Role { receiver, sender };

/// What a program tells the hub.
struct Announcement {
  Role role = Role::receiver;
  long pid = 0;
  bool leaving = false; ///< an orderly end: forget me now
};

/// "receiver" or "sender". A string literal.
const char *role_name(Role role);

/// The datagram for an announcement.
std::string announcement_text(const Announcement &announcement);

/// Reads a datagram; empty when it is not an announcement.
std::optional<Announcement> read_announcement(std::string_view datagram);

} // namespace standin
