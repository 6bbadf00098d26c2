#include "registry.h"

#include <algorithm>
#include <iterator>

namespace standin {
namespace {

/// Anyone can send datagrams, so the size of the list is limited.
constexpr std::size_t max_registrations = 64;

bool is_expired(const Registration &registration, Clock::time_point now) {
  return now - registration.renewed >= registration_lifetime;
}

} // namespace

bool apply_announcement(Registry &registry, const Announcement &announcement,
                        const std::string &address, Clock::time_point now) {
  const std::lock_guard lock(registry.mutex);
  auto &all = registry.registrations;
  all.erase(std::remove_if(all.begin(), all.end(),
                           [&](const Registration &known) { return is_expired(known, now); }),
            all.end());
  const auto known = std::find_if(all.begin(), all.end(), [&](const Registration &candidate) {
    return candidate.role == announcement.role && candidate.pid == announcement.pid &&
           candidate.address == address;
  });
  if (announcement.leaving) {
    if (known != all.end()) {
      all.erase(known);
    }
    return true;
  }
  if (known != all.end()) {
    known->renewed = now;
    return true;
  }
  if (all.size() >= max_registrations) {
    return false;
  }
  all.push_back(
      {announcement.role, announcement.pid, address, std::chrono::system_clock::now(), now, now});
  return true;
}

std::vector<Registration> list_registered(const Registry &registry, Clock::time_point now) {
  const std::lock_guard lock(registry.mutex);
  std::vector<Registration> live;
  std::copy_if(registry.registrations.begin(), registry.registrations.end(),
               std::back_inserter(live),
               [&](const Registration &known) { return !is_expired(known, now); });
  return live;
}

} // namespace standin
