// Becomes another program and tells the moment of that ("exec"), and the processor time that it
// has itself used until then ("processor"):
//
//     bench_launch DESCRIPTORS PROGRAM [ARGUMENT]...
//
// with so many more descriptors open than the standard streams. Status 1 when the limit forbids
// them.

#include "moments.h"

#include <cstdlib>

#include <sys/resource.h>

namespace {

/// False: the system does not allow so many.
bool open_descriptors(int count) {
  constexpr rlim_t others = 64;
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlim_t wanted = static_cast<rlim_t>(count) + others;
  if (limit.rlim_cur < wanted) {
    limit.rlim_cur = wanted;
    limit.rlim_max = limit.rlim_max < wanted ? wanted : limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
  }
  for (int opened = 0; opened < count; ++opened) {
    if (open("/dev/null", O_RDWR) < 0) { // NOLINT(android-cloexec-open): to be handed on
      return false;
    }
  }
  return true;
}

} // namespace

int main(int argc, char **argv) {
  if (argc < 3 || !open_descriptors(std::atoi(argv[1]))) {
    return 1;
  }
  tell("launcher", "processor", nanoseconds(CLOCK_PROCESS_CPUTIME_ID));
  tell("launcher", "exec");
  execv(argv[2], argv + 2);
  return 127;
}
