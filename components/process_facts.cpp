#include "process_facts.h"

#include "clock.h"
#include "platform.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>

#include <dirent.h>
#include <unistd.h>

namespace standin {
namespace {

std::vector<int> list_other_descriptors() {
  std::vector<int> descriptors;
  DIR *folder = opendir(descriptor_folder());
  if (folder == nullptr) {
    return descriptors;
  }
  while (const dirent *entry = readdir(folder)) {
    const std::string name = entry->d_name;
    if (name.find_first_not_of("0123456789") != std::string::npos) {
      continue;
    }
    const int descriptor = std::atoi(name.c_str());
    if (descriptor > STDERR_FILENO && descriptor != dirfd(folder)) {
      descriptors.push_back(descriptor);
    }
  }
  closedir(folder);
  std::sort(descriptors.begin(), descriptors.end());
  return descriptors;
}

std::vector<int> list_ignored_signals() {
  std::vector<int> signals;
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action = {};
    if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) {
      signals.push_back(signal);
    }
  }
  return signals;
}

std::vector<int> list_blocked_signals() {
  std::vector<int> signals;
  sigset_t blocked;
  sigemptyset(&blocked);
  sigprocmask(SIG_BLOCK, nullptr, &blocked);
  for (int signal = 1; signal < NSIG; ++signal) {
    if (sigismember(&blocked, signal) == 1) {
      signals.push_back(signal);
    }
  }
  return signals;
}

} // namespace

ProcessFacts gather_process_facts(int argc, char **argv) {
  ProcessFacts facts;
  facts.time_ns = monotonic_ns();
  facts.ppid = getppid();
  facts.pgid = getpgrp();
  facts.sid = getsid(0);
  facts.argv.assign(argv, argv + argc);
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    facts.is_terminal.at(descriptor) = isatty(descriptor) == 1;
    facts.standard_targets.push_back(descriptor_target(descriptor));
  }
  facts.other_descriptors = list_other_descriptors();
  facts.ignored_signals = list_ignored_signals();
  facts.blocked_signals = list_blocked_signals();
  return facts;
}

} // namespace standin
