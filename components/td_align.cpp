/// A stand-in for the suite's align tool. It prints its arguments.
#include "standin.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr const char *help = "Usage: td_align [ARGUMENT]...\n"
                             "\n"
                             "A stand-in for the suite's align tool. It prints its arguments, one "
                             "a line, and aligns nothing.\n"
                             "\n"
                             "  --help  as the only argument: print this text\n";

} // namespace

int main(int argc, char **argv) {
  using namespace standin;
  Standin standin = start_standin(Program::align, argc, argv);
  if (argc == 2 && std::string(argv[1]) == "--help") {
    print_and_exit(standin, help);
  }
  for (int i = 0; i < argc; ++i) {
    std::printf("argv[%d]: %s\n", i, argv[i]);
  }
  if (std::fflush(stdout) != 0) {
    fail(standin, EXIT_FAILURE, "cannot print");
  }
  if (standin.behaviour.exit_after) {
    while (wait_for(standin, -1, Clock::time_point::max()) != WaitResult::stop) {}
  }
  end_standin(standin);
}
