// The kernel's tables name each listening socket by its inode, and a process's descriptors name the
// sockets it has open in the same way.

#include "folder_entries.h"
#include "listening.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>

#include <unistd.h>

namespace {

constexpr unsigned state_listen = 0x0A;
constexpr std::size_t row_length = 150; // of the kernel's table for IPv4

using Sockets = std::set<std::string>; // each "socket:[inode]"

struct Process {
  pid_t parent = 0;
  pid_t session = 0;
  unsigned long long start = ULLONG_MAX; // ticks after the start of the system
  bool has_ended = true;
};

/// Calls `visit` with each socket that listens on the port, until it returns false. False: the
/// table is there but cannot be read.
template <typename Visit>
bool for_each_listener(const char *table, std::uint16_t port, Visit visit) {
  std::FILE *file = std::fopen(table, "re");
  if (file == nullptr) {
    return errno == ENOENT; // a system without IPv6
  }
  // Read row by row: the kernel collects no more rows than are read, and after the listening
  // sockets come the connections, whose hash table may take it milliseconds.
  std::array<char, row_length> buffer{};
  std::setvbuf(file, buffer.data(), _IOFBF, buffer.size());
  std::array<char, 512> line{};
  bool wanted = true;
  while (wanted && std::fgets(line.data(), line.size(), file) != nullptr) {
    unsigned local_port = 0;
    unsigned state = 0;
    unsigned long inode = 0;
    // Number, local and remote address, state, queues, timer, retries, user, timeout, inode.
    if (std::sscanf(line.data(), "%*s %*[0-9A-F]:%x %*s %x %*s %*s %*s %*s %*s %lu", &local_port,
                    &state, &inode) == 3 &&
        local_port == port && state == state_listen) {
      wanted = visit("socket:[" + std::to_string(inode) + "]");
    }
  }
  std::fclose(file);
  return true;
}

Process examine(pid_t pid) {
  std::array<char, 512> text{};
  if (std::FILE *file = std::fopen(("/proc/" + std::to_string(pid) + "/stat").c_str(), "re")) {
    [[maybe_unused]] const std::size_t size = std::fread(text.data(), 1, text.size() - 1, file);
    std::fclose(file);
  }
  Process process;
  char state = 'X';
  // The second field is the program's name in parentheses, which may hold any character.
  if (const char *name_end = std::strrchr(text.data(), ')')) {
    std::sscanf(name_end + 1,
                " %c %d %*d %d %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %llu",
                &state, &process.parent, &process.session, &process.start);
  }
  process.has_ended = state == 'X' || state == 'Z';
  return process;
}

/// Whether /proc shows all processes, by the same ids as this process sees.
bool shows_all_processes() {
  std::array<char, 32> self{};
  return readlink("/proc/self", self.data(), self.size() - 1) > 0 &&
         std::atoi(self.data()) == getpid() && !examine(1).has_ended;
}

/// Whether this user may have started the process: root can start one of another user. The real
/// user counts, which a program with capabilities or set-user-ID keeps.
bool may_be_of_this_user(pid_t pid) {
  unsigned user = getuid();
  if (std::FILE *file = std::fopen(("/proc/" + std::to_string(pid) + "/status").c_str(), "re")) {
    std::array<char, 256> line{};
    while (std::fgets(line.data(), line.size(), file) != nullptr &&
           std::sscanf(line.data(), "Uid: %u", &user) != 1) {}
    std::fclose(file);
  }
  return getuid() == 0 || user == getuid();
}

using Processes = std::map<pid_t, Process>;

/// The processes that a descendant of `root` may have started before it ended. Their parent is the
/// first process or an ancestor of `root` that adopts orphans. They are not older than `root`, and
/// neither is their session unless it is that of `root`: that excludes another copy of the launcher
/// that was started at the same time. Processes of other users are excluded, too.
std::set<pid_t> possible_orphans(pid_t root, Processes &all) {
  const Process hub = all[root];
  std::set<pid_t> ancestors{1};
  for (pid_t pid = hub.parent; pid > 0 && ancestors.insert(pid).second;) {
    pid = all[pid].parent;
  }
  std::set<pid_t> orphans;
  for (const auto &[pid, process] : all) {
    const auto leader = all.find(process.session);
    // 0: the session's leader is outside this container.
    const bool old_session =
        process.session == 0 || (leader != all.end() && leader->second.start < hub.start);
    if (process.start >= hub.start && ancestors.count(process.parent) != 0 &&
        ancestors.count(pid) == 0 && (process.session == hub.session || !old_session) &&
        may_be_of_this_user(pid)) {
      orphans.insert(pid);
    }
  }
  return orphans;
}

/// `root` and all that it may have started; empty on failure.
std::set<pid_t> process_tree(pid_t root) {
  Processes all;
  const bool listed = for_each_entry("/proc", [&](const char *name) {
    if (const pid_t pid = std::atoi(name); pid > 0) {
      all[pid] = examine(pid);
    }
  });
  if (!listed) {
    return {};
  }
  std::set<pid_t> tree = possible_orphans(root, all);
  tree.insert(root);
  for (bool grew = true; grew;) {
    grew = false;
    for (const auto &[pid, process] : all) {
      grew = (tree.count(process.parent) != 0 && tree.insert(pid).second) || grew;
    }
  }
  return tree;
}

/// Whether the process has none of the sockets open. False if that is not known.
bool has_none_of(pid_t pid, const Sockets &sockets) {
  const std::string folder = "/proc/" + std::to_string(pid) + "/fd/";
  bool found = false;
  bool readable = true;
  const bool opened = for_each_entry(folder, [&](const char *name) {
    std::array<char, 64> target{};
    const ssize_t size = readlink((folder + name).c_str(), target.data(), target.size() - 1);
    // ENOENT: closed meanwhile. EINVAL: "." and "..".
    readable = readable && (size >= 0 || errno == ENOENT || errno == EINVAL);
    found = found || sockets.count(target.data()) != 0;
  });
  return !found && ((opened && readable) || examine(pid).has_ended);
}

} // namespace

// A process and a port. NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
bool only_others_listen(pid_t root, std::uint16_t port) {
  Sockets sockets;
  bool root_has_none = true;
  // `root` alone first: where it listens itself, as usual, nothing more is read.
  const auto is_of_another = [&](const std::string &socket) {
    sockets.insert(socket);
    root_has_none = has_none_of(root, {socket});
    return root_has_none;
  };
  const bool others_only =
      for_each_listener("/proc/net/tcp", port, is_of_another) && root_has_none &&
      for_each_listener("/proc/net/tcp6", port, is_of_another) && root_has_none;
  // If no listener is visible, one that these tables do not show has answered.
  if (!others_only || sockets.empty() || !shows_all_processes() || examine(root).has_ended) {
    return false;
  }
  const std::set<pid_t> tree = process_tree(root);
  return !tree.empty() && std::all_of(tree.begin(), tree.end(),
                                      [&](pid_t pid) { return has_none_of(pid, sockets); });
}
