#include "scripted.h"

#include <array>
#include <cerrno>
#include <cstddef>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace scripted {

bool on_main_thread() {
  return getpid() == static_cast<pid_t>(syscall(SYS_gettid));
}

// Every clone() that creates a thread fails with EAGAIN. clone3() fails with ENOSYS, because a
// filter cannot see its flags; the C library then uses clone().
void forbid_threads() {
  constexpr unsigned system_call = offsetof(seccomp_data, nr);
  constexpr unsigned clone_flags = offsetof(seccomp_data, args); // the low half, as on x86 and ARM
  std::array<sock_filter, 8> code{{
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, system_call),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone3, 3, 0),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone, 0, 4),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, clone_flags),
      BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, CLONE_THREAD, 1, 2),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EAGAIN),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  }};
  sock_fprog program{code.size(), code.data()};
  if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
      prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
    give_up("prctl");
  }
}

} // namespace scripted
