/// What the launcher needs of this header, for a syntax check on other systems: names and types
/// only, not the layout.
#pragma once

#include <cstdint>

#define PROC_PPID_ONLY 6
#define PROC_PIDLISTFDS 1
#define PROC_PIDTBSDINFO 3
#define PROC_PIDFDSOCKETINFO 3
#define PROX_FDTYPE_SOCKET 2
#define SOCKINFO_TCP 2
#define TSI_S_LISTEN 1

struct proc_bsdinfo {
  std::uint32_t pbi_status;
  std::uint64_t pbi_start_tvsec;
  std::uint64_t pbi_start_tvusec;
};
struct proc_fdinfo {
  std::int32_t proc_fd;
  std::uint32_t proc_fdtype;
};
struct in_sockinfo {
  int insi_lport;
};
struct tcp_sockinfo {
  in_sockinfo tcpsi_ini;
  int tcpsi_state;
};
struct socket_info {
  int soi_kind;
  union {
    in_sockinfo pri_in;
    tcp_sockinfo pri_tcp;
  } soi_proto;
};
struct socket_fdinfo {
  socket_info psi;
};
