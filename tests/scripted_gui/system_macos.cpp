#include "scripted.h"

#include <cerrno>

#include <pthread.h>

namespace scripted {

bool on_main_thread() {
  return pthread_main_np() == 1;
}

void forbid_threads() {
  errno = ENOTSUP; // no test asks for it on this system
  give_up("no way to forbid threads");
}

} // namespace scripted
