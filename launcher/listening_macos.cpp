#include "listening.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>
#include <tuple>
#include <vector>

#include <arpa/inet.h>
#include <libproc.h>
#include <sys/proc_info.h>

namespace {

/// What `list(buffer, bytes)` lists; empty on failure. It returns a number of bytes: without a
/// buffer those that are needed, and 0 on failure, with errno set.
template <typename Item, typename List> std::optional<std::vector<Item>> listed(List list) {
  const int needed = list(nullptr, 0);
  if (needed <= 0) {
    return std::nullopt;
  }
  constexpr std::size_t spare = 32; // for what comes between the two calls
  std::vector<Item> items(static_cast<std::size_t>(needed) / sizeof(Item) + spare);
  errno = 0;
  const int bytes = list(items.data(), static_cast<int>(items.size() * sizeof(Item)));
  if (bytes < 0 || (bytes == 0 && errno != 0)) {
    return std::nullopt;
  }
  items.resize(static_cast<std::size_t>(bytes) / sizeof(Item));
  return items;
}

std::optional<std::vector<pid_t>> children_of(pid_t pid) {
  return listed<pid_t>([pid](void *buffer, int bytes) {
    return proc_listpids(PROC_PPID_ONLY, static_cast<std::uint32_t>(pid), buffer, bytes);
  });
}

/// Empty on failure, also for another user's process; errno is ESRCH when there is none.
std::optional<proc_bsdinfo> examine(pid_t pid) {
  proc_bsdinfo info{};
  const int size = proc_pidinfo(pid, PROC_PIDTBSDINFO, 0, &info, sizeof info);
  return size == static_cast<int>(sizeof info) ? std::optional(info) : std::nullopt;
}

bool has_ended(pid_t pid) {
  constexpr std::uint32_t zombie = 5; // SZOMB of <sys/proc.h>
  const std::optional<proc_bsdinfo> info = examine(pid);
  return info ? info->pbi_status == zombie : errno == ESRCH;
}

/// Whether no descendant of `hub` can have started the process, a child of launchd, which adopts
/// all orphans: it is older than `hub`, or another user's.
bool cannot_be_orphan_of(const std::optional<proc_bsdinfo> &hub, pid_t pid) {
  const std::optional<proc_bsdinfo> process = examine(pid);
  return !hub || !process ||
         std::tie(process->pbi_start_tvsec, process->pbi_start_tvusec) <
             std::tie(hub->pbi_start_tvsec, hub->pbi_start_tvusec);
}

/// `root` and all that it may have started; empty on failure.
std::optional<std::vector<pid_t>> process_tree(pid_t root) {
  std::optional<std::vector<pid_t>> tree = children_of(1);
  if (!tree) {
    return tree;
  }
  const std::optional<proc_bsdinfo> hub = examine(root);
  tree->erase(std::remove_if(tree->begin(), tree->end(),
                             [&hub](pid_t pid) { return cannot_be_orphan_of(hub, pid); }),
              tree->end());
  tree->push_back(root);
  for (std::size_t i = 0; i < tree->size(); ++i) {
    const std::optional<std::vector<pid_t>> children = children_of(tree->at(i));
    if (!children) {
      return std::nullopt;
    }
    std::copy_if(children->begin(), children->end(), std::back_inserter(*tree), [&](pid_t pid) {
      return std::find(tree->begin(), tree->end(), pid) == tree->end();
    });
  }
  return tree;
}

/// Whether the descriptor is a TCP socket that listens on the port; empty when it cannot be
/// examined.
std::optional<bool> listens(pid_t pid, const proc_fdinfo &descriptor, std::uint16_t port) {
  socket_fdinfo info{};
  if (proc_pidfdinfo(pid, descriptor.proc_fd, PROC_PIDFDSOCKETINFO, &info, sizeof info) !=
      static_cast<int>(sizeof info)) {
    // EBADF and ENOENT: it was closed meanwhile.
    return errno == EBADF || errno == ENOENT ? std::optional(false) : std::nullopt;
  }
  const tcp_sockinfo &tcp = info.psi.soi_proto.pri_tcp;
  return info.psi.soi_kind == SOCKINFO_TCP && tcp.tcpsi_state == TSI_S_LISTEN &&
         ntohs(static_cast<std::uint16_t>(tcp.tcpsi_ini.insi_lport)) == port;
}

/// Whether the process does not listen on the port. False if that is not known.
bool does_not_listen(pid_t pid, std::uint16_t port) {
  const auto descriptors = listed<proc_fdinfo>([pid](void *buffer, int bytes) {
    return proc_pidinfo(pid, PROC_PIDLISTFDS, 0, buffer, bytes);
  });
  if (!descriptors) {
    return has_ended(pid);
  }
  return std::all_of(descriptors->begin(), descriptors->end(), [&](const proc_fdinfo &descriptor) {
    return descriptor.proc_fdtype != PROX_FDTYPE_SOCKET ||
           listens(pid, descriptor, port) == std::optional(false);
  });
}

} // namespace

// A process and a port. NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
bool only_others_listen(pid_t root, std::uint16_t port) {
  if (has_ended(root) || !does_not_listen(root, port)) {
    return false;
  }
  const std::optional<std::vector<pid_t>> tree = process_tree(root);
  return tree && std::all_of(tree->begin(), tree->end(),
                             [port](pid_t pid) { return does_not_listen(pid, port); });
}
