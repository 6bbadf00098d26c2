#include "protocol.h"

#include "number.h"

#include <iterator>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

const char *role_name(Role role) {
  return role == Role::receiver ? "receiver" : "sender";
}

std::string announcement_text(const Announcement &announcement) {
  return std::string("td-standin ") + (announcement.leaving ? "leave " : "register ") +
         role_name(announcement.role) + " " + std::to_string(announcement.pid);
}

std::optional<Announcement> parse_announcement(std::string_view datagram) {
  std::istringstream stream{std::string(datagram)};
  const std::vector<std::string> words(std::istream_iterator<std::string>(stream), {});
  if (words.size() != 4 || words[0] != "td-standin" ||
      (words[1] != "register" && words[1] != "leave") ||
      (words[2] != role_name(Role::receiver) && words[2] != role_name(Role::sender))) {
    return std::nullopt;
  }
  const std::optional<long> pid = parse_number(words[3], 1, std::numeric_limits<long>::max());
  if (!pid) {
    return std::nullopt;
  }
  Announcement announcement;
  announcement.role = words[2] == role_name(Role::sender) ? Role::sender : Role::receiver;
  announcement.pid = *pid;
  announcement.leaving = words[1] == "leave";
  return announcement;
}

} // namespace standin
