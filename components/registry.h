/// The hub's list of registered receivers and senders.
#pragma once

#include "clock.h"
#include "protocol.h"

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace standin {

struct Registration {
  Role role = Role::receiver;
  long pid = 0;
  std::string address; ///< the client's "host:port"
  std::chrono::system_clock::time_point since;
  Clock::time_point since_steady; ///< the same moment as `since`
  Clock::time_point renewed;
};

/// The registrations, oldest first. The functions below lock it, so any thread may call them.
struct Registry {
  mutable std::mutex mutex;
  std::vector<Registration> registrations;
};

/// Adds, renews or removes the client that sent `announcement` from `address`. Returns false if it
/// would have to be added but the list is full (64 entries).
bool apply_announcement(Registry &registry, const Announcement &announcement,
                        const std::string &address, Clock::time_point now);

/// A copy of the registrations that have not expired at `now`, oldest first.
std::vector<Registration> list_registered(const Registry &registry, Clock::time_point now);

} // namespace standin
