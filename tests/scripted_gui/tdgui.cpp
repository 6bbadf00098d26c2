// A menu-bar interface without a menu bar: a test sends the callbacks to call over a socket.
//
// The interface is available when TD_SCRIPTED_GUI names a listening local socket.
// TD_SCRIPTED_GUI_MODE may say otherwise: "unavailable"; or "exit-early", which ends the process
// with status 5 instead of an answer to whether the interface is available; or "no-threads", which
// keeps the launcher from starting any further thread. Commands and answers are lines; every answer
// is a JSON object.
//
// Besides the callbacks there are "return", which ends the interface, and two commands that end the
// process, as an application's own Quit does: "exit STATUS" does it on the main thread, and
// "exit_on_thread STATUS [FIFO]" on another one, which first waits until someone opens the FIFO for
// writing. The main thread goes on meanwhile.

#include "tdgui.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <thread>

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

[[noreturn]] void give_up(const char *what) {
  std::perror(what);
  std::_Exit(70);
}

std::string variable(const char *name) {
  const char *value = std::getenv(name);
  return value == nullptr ? "" : value;
}

/// Makes every clone() that creates a thread fail with EAGAIN, as when the system has no more
/// threads. clone3() fails with ENOSYS, because a filter cannot see its flags; the C library then
/// uses clone(). Processes can still be created.
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

std::string json(bool value) {
  return value ? "true" : "false";
}

std::string json(const std::string &text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
    }
    quoted += c;
  }
  return quoted + "\"";
}

std::string answer(const std::string &result) {
  return "{\"result\":" + result + "}";
}

std::string describe_callbacks(const tdgui::GuiConfig &gui) {
  std::string text;
  const auto add = [&text](const char *name, bool is_set) {
    text += (text.empty() ? "" : ",") + json(std::string(name)) + ":" + json(is_set);
  };
  add("is_running", gui.is_running != nullptr);
  add("start", gui.start != nullptr);
  add("stop", gui.stop != nullptr);
  add("restart", gui.restart != nullptr);
  add("quit", gui.quit != nullptr);
  add("set_ports", gui.set_ports != nullptr);
  add("http_port", gui.http_port != nullptr);
  add("udp_port", gui.udp_port != nullptr);
  add("open_browser_pref", gui.open_browser_pref != nullptr);
  add("set_open_browser_pref", gui.set_open_browser_pref != nullptr);
  add("quit_fallback", gui.quit_fallback != nullptr);
  return "{" + text + "}";
}

std::string describe(const tdgui::GuiConfig &gui) {
  std::string rows;
  for (const tdgui::Component &component : gui.components) {
    rows += rows.empty() ? "" : ",";
    rows += "{\"name\":" + json(component.name) + ",\"label\":" + json(component.label) + "}";
  }
  return "{\"url\":" + json(gui.url) + ",\"status\":" + json(gui.status) + ",\"components\":[" +
         rows + "],\"callbacks\":" + describe_callbacks(gui) +
         ",\"main_thread\":" + json(getpid() == static_cast<pid_t>(syscall(SYS_gettid))) + "}";
}

std::string set_ports(const tdgui::GuiConfig &gui, const std::string &ports) {
  std::istringstream words(ports);
  int http = 0;
  int udp = 0;
  words >> http >> udp;
  std::string message = "untouched";
  const bool done = gui.set_ports(http, udp, message);
  return "{\"result\":" + json(done) + ",\"message\":" + json(message) + "}";
}

/// Carries out a command on one component; returns "" when `command` is no such command.
std::string act_on_component(const tdgui::GuiConfig &gui, const std::string &command,
                             const std::string &name) {
  if (command == "is_running") {
    return answer(json(gui.is_running(name)));
  }
  if (command == "start") {
    gui.start(name);
  } else if (command == "stop") {
    gui.stop(name);
  } else if (command == "restart") {
    gui.restart(name);
  } else {
    return "";
  }
  return answer("null");
}

/// Carries out a command that calls a callback.
std::string carry_out(const tdgui::GuiConfig &gui, const std::string &command,
                      const std::string &argument) {
  if (command == "config") {
    return answer(describe(gui));
  }
  if (command == "set_ports") {
    return set_ports(gui, argument);
  }
  if (command == "http_port") {
    return answer(std::to_string(gui.http_port()));
  }
  if (command == "udp_port") {
    return answer(std::to_string(gui.udp_port()));
  }
  if (command == "pref") {
    return answer(json(gui.open_browser_pref()));
  }
  if (command == "set_pref") {
    gui.set_open_browser_pref(argument == "1");
    return answer("null");
  }
  if (command == "quit") {
    gui.quit();
    return answer("null");
  }
  if (command == "ignore_sigchld") {
    std::signal(SIGCHLD, argument == "1" ? SIG_IGN : SIG_DFL);
    return answer("null");
  }
  const std::string done = act_on_component(gui, command, argument);
  return done.empty() ? R"({"error":"no such command"})" : done;
}

/// Connects to the test. The descriptor is inheritable on purpose: the launcher must close it in
/// the programs that it starts.
int connect_to_test() {
  const std::string path = variable("TD_SCRIPTED_GUI");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  if (descriptor < 0 ||
      connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
    give_up("scripted interface");
  }
  return descriptor;
}

/// Reads the next line, without its line feed. Returns false when the test has closed the socket.
bool read_line(int descriptor, std::string &line) {
  line.clear();
  // poll, as in an event loop. Also, GCC 12's ThreadSanitizer runs a signal handler at once during
  // poll, but during read only after it has returned, and the launcher's handlers restart a read.
  pollfd ready{descriptor, POLLIN, 0};
  while (poll(&ready, 1, -1) == -1 && errno == EINTR) {}
  for (char c = 0;;) {
    const ssize_t count = read(descriptor, &c, 1);
    if (count == 1 && c == '\n') {
      return true;
    }
    if (count == 1) {
      line += c;
    } else if (count == 0 || errno != EINTR) {
      return false;
    }
  }
}

void write_line(int descriptor, const std::string &text) {
  const std::string line = text + "\n";
  if (send(descriptor, line.data(), line.size(), MSG_NOSIGNAL) !=
      static_cast<ssize_t>(line.size())) {
    std::perror("scripted interface");
  }
}

/// Ends the process on another thread, with the status and after the FIFO that `argument` names.
void exit_on_thread(const std::string &argument) {
  std::istringstream words(argument);
  int status = 0;
  std::string fifo;
  words >> status >> std::ws;
  std::getline(words, fifo);
  std::thread([status, fifo] {
    // The opening itself waits for the writer.
    if (!fifo.empty() && open(fifo.c_str(), O_RDONLY) == -1) {
      give_up("FIFO");
    }
    std::exit(status);
  }).detach();
}

} // namespace

extern "C" bool tdgui_available() {
  const std::string mode = variable("TD_SCRIPTED_GUI_MODE");
  if (mode == "no-threads") {
    forbid_threads();
  }
  if (mode == "exit-early") {
    std::exit(5); // as a window system's library may when it loses its server
  }
  return mode != "unavailable" && !variable("TD_SCRIPTED_GUI").empty();
}

extern "C" void tdgui_run(const tdgui::GuiConfig *gui) {
  const int test = connect_to_test();
  for (std::string line; read_line(test, line);) {
    if (line == "return") {
      write_line(test, answer("null"));
      break;
    }
    const std::string command = line.substr(0, line.find(' '));
    const std::string argument = line.substr(std::min(line.size(), command.size() + 1));
    if (command == "exit") {
      write_line(test, answer("null"));
      std::exit(std::atoi(argument.c_str()));
    }
    if (command == "exit_on_thread") {
      write_line(test, answer("null"));
      exit_on_thread(argument);
      continue;
    }
    write_line(test, carry_out(*gui, command, argument));
  }
  close(test);
}
