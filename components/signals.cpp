#include "signals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <functional>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <unistd.h>

namespace standin {
namespace {

int stop_pipe_write_end = -1; // set before the handlers are installed, then constant

void handle_stop_signal(int signal) {
  const int saved_errno = errno;
  const auto byte = static_cast<unsigned char>(signal);
  // A full pipe already holds thousands of signals, so losing this one does no harm.
  [[maybe_unused]] const ssize_t written = write(stop_pipe_write_end, &byte, 1);
  errno = saved_errno;
}

} // namespace

int catch_stop_signals() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) {
    return -1;
  }
  for (const int end : ends) {
    fcntl(end, F_SETFL, O_NONBLOCK);
    fcntl(end, F_SETFD, FD_CLOEXEC);
  }
  stop_pipe_write_end = ends[1];
  struct sigaction action = {};
  action.sa_handler = handle_stop_signal;
  // Both signals are blocked while a handler runs. Otherwise, if both are pending, the second
  // handler would interrupt the first one before it writes, and their order would be reversed.
  sigemptyset(&action.sa_mask);
  sigaddset(&action.sa_mask, SIGTERM);
  sigaddset(&action.sa_mask, SIGINT);
  sigaction(SIGTERM, &action, nullptr);
  sigaction(SIGINT, &action, nullptr);
  return ends[0];
}

int next_stop_signal(int read_end) {
  unsigned char byte = 0;
  return read(read_end, &byte, 1) == 1 ? byte : 0;
}

void start_thread_with_signals_blocked(std::function<void()> work) {
  sigset_t every;
  sigset_t before;
  sigfillset(&every);
  pthread_sigmask(SIG_SETMASK, &every, &before);
  std::thread(std::move(work)).detach();
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void die_by_signal(int signal) {
  const rlimit no_core{};
  setrlimit(RLIMIT_CORE, &no_core);
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
  sigset_t only;
  sigemptyset(&only);
  sigaddset(&only, signal);
  pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
  raise(signal);
}

} // namespace standin
