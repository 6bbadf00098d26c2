/// System calls that fail, as on another kernel or when a resource is exhausted.
#pragma once

#include <array>
#include <cstddef>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

/// Makes the system call `number` fail with `error` in this process, for good. False: it cannot.
inline bool forbid_call(unsigned number, unsigned error) {
  std::array<sock_filter, 4> code{{
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  }};
  sock_fprog program{code.size(), code.data()};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}
