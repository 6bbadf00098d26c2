// A menu-bar interface without a menu bar: a test sends the callbacks to call over a socket.
//
// The interface is available when TD_SCRIPTED_GUI names a listening local socket.
// TD_SCRIPTED_GUI_MODE may change that: "unavailable"; or "exit-unanswered", which ends the process
// with status 5 when it is asked whether the interface is available; or "exit-early", which ends it
// so when the interface is run; or "no-threads", which keeps the launcher that is linked with the
// interface from starting any thread. TD_SCRIPTED_GUI_SEARCH and
// TD_SCRIPTED_GUI_EXIT may each name a FIFO. With all signals blocked, the answer to whether the
// interface is available, and an exit handler, registered when the interface is loaded, wait
// until someone opens it for writing. Commands and answers are lines; every answer is a JSON
// object.
//
// Besides the callbacks there are "return", which ends the interface, "change_environment", which
// removes HOME, and adds and replaces another variable, and two commands that end the process, as
// an application's own Quit does: "exit STATUS" does it on the main thread, and "exit_on_thread
// STATUS [FIFO]" on another one, which first waits until someone opens the FIFO for writing. The
// main thread goes on meanwhile.

#include "scripted.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using scripted::give_up;
using scripted::on_main_thread;

constexpr int early_status = 5;

std::string variable(const char *name) {
  const char *value = std::getenv(name);
  return value == nullptr ? "" : value;
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
         ",\"main_thread\":" + json(on_main_thread()) + "}";
}

std::string set_ports(const tdgui::GuiConfig &gui, const std::string &ports) {
  const int http = std::atoi(ports.c_str());
  const int udp = std::atoi(ports.substr(ports.find(' ') + 1).c_str());
  std::string message = "untouched";
  const bool done = gui.set_ports(http, udp, message);
  return "{\"result\":" + json(done) + ",\"message\":" + json(message) + "}";
}

/// Carries out a command on one component; returns "" if `command` is not one of these.
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

/// As plug-ins of a toolkit do, each in its own way.
void change_environment() {
  unsetenv("HOME");
  setenv("TD_ADDED", "1", 1);
  setenv("PATH", "/nowhere", 1);
}

/// Carries out a command after which the process goes on.
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
  if (command == "change_environment") {
    change_environment();
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
  std::memcpy(address.sun_path, path.data(), std::min(path.size(), sizeof address.sun_path - 1));
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
  // The launcher ignores SIGPIPE.
  if (write(descriptor, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
    std::fputs("scripted interface: the test takes no answer\n", stderr);
  }
}

/// Opening a FIFO waits until someone opens it for writing.
void wait_for_writer(const std::string &fifo) {
  if (open(fifo.c_str(), O_RDONLY) == -1) {
    give_up("FIFO");
  }
}

/// As a toolkit does while it opens the display.
void wait_with_signals_blocked(const std::string &fifo) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  wait_for_writer(fifo);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

/// Ends the process on another thread, with the status and after the FIFO that `argument` names.
void exit_on_thread(const std::string &argument) {
  const int status = std::atoi(argument.c_str());
  const std::size_t space = argument.find(' ');
  const std::string fifo = space == std::string::npos ? "" : argument.substr(space + 1);
  std::thread([status, fifo] {
    if (!fifo.empty()) {
      wait_for_writer(fifo);
    }
    std::exit(status);
  }).detach();
}

} // namespace

namespace scripted {

void give_up(const char *what) {
  std::fprintf(stderr, "%s: %s\n", what, std::strerror(errno));
  std::_Exit(70);
}

void prepare() {
  if (variable("TD_SCRIPTED_GUI_MODE") == "no-threads") {
    forbid_threads();
  }
}

void load() {
  if (!variable("TD_SCRIPTED_GUI_EXIT").empty()) {
    std::atexit([] { wait_for_writer(variable("TD_SCRIPTED_GUI_EXIT")); });
  }
}

bool is_available() {
  const std::string mode = variable("TD_SCRIPTED_GUI_MODE");
  if (!variable("TD_SCRIPTED_GUI_SEARCH").empty()) {
    wait_with_signals_blocked(variable("TD_SCRIPTED_GUI_SEARCH"));
  }
  if (mode == "exit-unanswered") {
    std::exit(early_status); // as a window system's library may when it has no server
  }
  return mode != "unavailable" && !variable("TD_SCRIPTED_GUI").empty();
}

void run(const tdgui::GuiConfig &gui) {
  if (variable("TD_SCRIPTED_GUI_MODE") == "exit-early") {
    std::exit(early_status); // as a window system's library may when it loses its server
  }
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
    write_line(test, carry_out(gui, command, argument));
  }
  close(test);
}

} // namespace scripted
