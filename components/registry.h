/// The hub's list of who has registered.
#pragma once

#include "registration.h"

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace standin {

struct Registration {
  Role role = Role::receiver;
  long pid = 0;
  std::string address; ///< where it registers from, "host:port"
  std::chrono::system_clock::time_point since;
  std::chrono::steady_clock::time_point since_steady;
  std::chrono::steady_clock::time_point renewed;
};

/// The registrations, oldest first. Use the functions below, from any thread.
struct Registry {
  mutable std::mutex mutex;
  std::vector<Registration> registrations;
};

/// Adds, renews or removes what announced itself from `address`. False when the list is full (64)
/// and so a newcomer was turned away.
bool announce(Registry &registry, const Announcement &announcement, const std::string &address,
              std::chrono::steady_clock::time_point now);

/// The registrations that have not expired at `now`, oldest first.
std::vector<Registration> list_registered(const Registry &registry,
                                          std::chrono::steady_clock::time_point now);

} // namespace standin
