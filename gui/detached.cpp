#include "detached.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void set_defaults(posix_spawnattr_t &attributes, posix_spawn_file_actions_t &files) {
  sigset_t all, none;
  sigfillset(&all);
  sigemptyset(&none);
  posix_spawnattr_setsigdefault(&attributes, &all);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK |
                                            static_cast<short>(POSIX_SPAWN_SETSID));
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&files, STDOUT_FILENO, STDERR_FILENO);
  posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
}

/// Waits for this process only: other children are waited for elsewhere.
bool wait_for(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) {
      return false;
    }
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

namespace td {

bool run_detached(const std::string &command, const std::vector<std::string> &arguments) {
  const std::string line = "{ " + command + "; } &";
  std::vector<const char *> argv = {"sh", "-c", line.c_str(), "sh"};
  for (const std::string &argument : arguments) {
    argv.push_back(argument.c_str());
  }
  argv.push_back(nullptr);

  posix_spawnattr_t attributes;
  posix_spawn_file_actions_t files;
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_init(&files);
  set_defaults(attributes, files);
  pid_t shell = 0;
  const int error = posix_spawn(&shell, "/bin/sh", &files, &attributes,
                                const_cast<char *const *>(argv.data()), environ);
  posix_spawn_file_actions_destroy(&files);
  posix_spawnattr_destroy(&attributes);
  return error == 0 && wait_for(shell);
}

} // namespace td
