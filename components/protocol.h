/// The datagrams between the clients (receivers and senders) and the hub. A client sends an
/// announcement once a second. The hub acknowledges it.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace standin {

/// Time between two announcements of one client.
constexpr std::chrono::milliseconds registration_period{1000};

/// The hub removes a client after this time without an announcement. A client considers itself
/// unregistered after this time without an acknowledgement.
constexpr std::chrono::milliseconds registration_lifetime{3000};

/// The hub's reply to an announcement.
constexpr std::string_view acknowledgement = "td-standin acknowledged";

enum class Role { receiver, sender };

/// What a client tells the hub.
struct Announcement {
  Role role = Role::receiver;
  long pid = 0;
  bool leaving = false; ///< the client ends: the hub should remove it now
};

/// "receiver" or "sender". A string literal.
const char *role_name(Role role);

/// The text of the datagram for an announcement.
std::string announcement_text(const Announcement &announcement);

/// Parses a datagram. Empty if it is not an announcement.
std::optional<Announcement> parse_announcement(std::string_view datagram);

} // namespace standin
