#include "registration.h"

#include <array>
#include <charconv>
#include <iterator>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace standin {

const char *role_name(Role role) {
  return role == Role::receiver ? "receiver" : "sender";
}

std::string announcement_text(const Announcement &announcement) {
  return std::string("td-standin ") + (announcement.leaving ? "leave " : "register ") +
         role_name(announcement.role) + " " + std::to_string(announcement.pid);
}

std::optional<Announcement> read_announcement(std::string_view datagram) {
  std::istringstream stream{std::string(datagram)};
  const std::vector<std::string> words(std::istream_iterator<std::string>(stream), {});
  if (words.size() != 4 || words[0] != "td-standin" ||
      (words[1] != "register" && words[1] != "leave") ||
      (words[2] != role_name(Role::receiver) && words[2] != role_name(Role::sender))) {
    return std::nullopt;
  }
  Announcement announcement;
  announcement.leaving = words[1] == "leave";
  announcement.role = words[2] == role_name(Role::sender) ? Role::sender : Role::receiver;
  const std::string &pid = words[3];
  const auto [stop, error] = std::from_chars(pid.data(), pid.data() + pid.size(), announcement.pid);
  if (error != std::errc{} || stop != pid.data() + pid.size() || announcement.pid < 1) {
    return std::nullopt;
  }
  return announcement;
}

} // namespace standin
