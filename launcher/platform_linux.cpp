#include "descriptors.h"
#include "osascript.h"
#include "platform.h"

#include <climits>
#include <csignal>
#include <cstring>

#include <sys/auxv.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::size_t path_capacity = 4096; // with the terminating NUL

/// False where the kernel (before 5.9) does not have the call. The C library need not have it.
bool close_range(int first, int last) {
  return syscall(SYS_close_range, static_cast<unsigned>(first), static_cast<unsigned>(last), 0U) ==
         0;
}

std::string with_double_backslashes(const std::string &text) {
  std::string result;
  for (const char c : text) {
    result.append(c == '\\' ? 2 : 1, c);
  }
  return result;
}

} // namespace

namespace platform {

std::string executable_path() {
  // What the kernel was given to execute. /proc/self/exe would resolve links.
  const unsigned long address = getauxval(AT_EXECFN);
  const char *path = reinterpret_cast<const char *>(address); // NOLINT(performance-no-int-to-ptr)
  if (path == nullptr || strnlen(path, path_capacity) == path_capacity) {
    return "";
  }
  return path;
}

pid_t fork_to_execute(void (*execute)(const void *argument), const void *argument,
                      bool can_be_suspended) {
  // Unlike fork(), vfork() copies no page tables and causes no page faults afterwards, in either
  // process: a tenth of what starting a component costs. The rules for it forbid any call but those
  // of exec() and _exit(); what matters is that `execute` never returns and changes nothing that
  // this process uses. NOLINTBEGIN(*.vfork,*.Vfork,*-unsafe-functions)
  const pid_t pid = can_be_suspended ? fork() : vfork();
  if (pid == 0) {
    execute(argument);
  }
  return pid;
  // NOLINTEND(*.vfork,*.Vfork,*-unsafe-functions)
}

int highest_descriptor() {
  // Where the kernel closes a range itself the number does not matter, and looking for it takes
  // longer the more descriptors are open. The call closes nothing: no descriptor has this number.
  return close_range(INT_MAX, INT_MAX) ? INT_MAX : highest_listed_descriptor("/proc/self/fd");
}

void close_descriptors(int first, int last) {
  if (close_range(first, last)) {
    return;
  }
  for (int descriptor = first; descriptor <= last; ++descriptor) {
    close(descriptor);
  }
}

// The order of kill(2). NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
void end_with_parent(pid_t parent, int number) {
  prctl(PR_SET_PDEATHSIG, number);
  if (getppid() != parent) {
    kill(getpid(), number); // it ended before the call
  }
}

std::string browser_command(const std::string &url) {
  // In the background: without a desktop these tools run the browser themselves and end only when
  // it does. In a session of its own: a text browser would take the terminal's keys, and any
  // browser would end with the terminal. A background job leads no process group, so setsid needs
  // no fork. With its output through a pipe: a text browser that finds no terminal there does not
  // look for one elsewhere; w3m reads keys from its error output.
  return "set -- open; command -v open >/dev/null || set -- xdg-open; "
         "command -v setsid >/dev/null && set -- setsid \"$@\"; \"$@\" \"" +
         url + "\" </dev/null | /bin/cat &";
}

std::string alert_command(const std::string &message) {
  // Without a UTF-8 locale zenity shows no message that goes beyond ASCII. kdialog reads a
  // backslash as the start of an escape sequence.
  return "if command -v osascript; then " + osascript_command(message) +
         "; elif command -v zenity; then LC_ALL= LC_CTYPE=C.UTF-8 zenity --error --title Tandrel "
         "--no-markup --text '" +
         message + "'; elif command -v kdialog; then kdialog --title Tandrel --error '" +
         with_double_backslashes(message) +
         "'; elif command -v xmessage; then xmessage -title Tandrel -center '" + message +
         "'; fi >/dev/null 2>&1";
}

} // namespace platform
