// The time from starting a program to its end, and its page faults, for several command lines in
// turns:
//
//     bench_pass_through [OPTION OF GOOGLE BENCHMARK]... NAME=[terminal:]PROGRAM[,ARGUMENT]...
//
// Each has a session of its own and so no controlling terminal, unless it is to have this
// program's. Page faults are those of the program and of every process that it started and waited
// for.

#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int starts = 50; // of a repetition
const std::string in_terminal = "terminal:";

long faults_of_children() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return usage.ru_minflt;
}

/// The parts of a text between commas.
std::vector<std::string> split(const std::string &text) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == ',') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

/// False: it could not be started or failed.
bool run_once(char *const *argv, const posix_spawnattr_t &attributes) {
  pid_t pid = -1;
  int status = -1;
  return posix_spawn(&pid, argv[0], nullptr, &attributes, argv, environ) == 0 &&
         waitpid(pid, &status, 0) == pid && status == 0;
}

void measure(benchmark::State &state, std::vector<std::string> words) {
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  if (words[0].compare(0, in_terminal.size(), in_terminal) == 0) {
    words[0].erase(0, in_terminal.size());
  } else {
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  }
  std::vector<char *> argv;
  argv.reserve(words.size() + 1);
  for (std::string &word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  const long before = faults_of_children();
  while (state.KeepRunning()) {
    if (!run_once(argv.data(), attributes)) {
      state.SkipWithError("it failed");
      break;
    }
  }
  state.counters["faults"] = benchmark::Counter(static_cast<double>(faults_of_children() - before),
                                                benchmark::Counter::kAvgIterations);
  posix_spawnattr_destroy(&attributes);
}

} // namespace

int main(int argc, char **argv) {
  benchmark::Initialize(&argc, argv);
  for (int i = 1; i < argc; ++i) {
    const std::string given = argv[i];
    const std::size_t equals = given.find('=');
    if (equals == std::string::npos) {
      return 1;
    }
    const std::string name = given.substr(0, equals);
    // Older versions of the library take no string.
    // NOLINTNEXTLINE(readability-redundant-string-cstr)
    benchmark::RegisterBenchmark(name.c_str(), measure, split(given.substr(equals + 1)))
        ->UseRealTime()
        ->Iterations(starts);
  }
  benchmark::RunSpecifiedBenchmarks();
}
