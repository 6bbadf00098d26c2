// The launcher itself: entry and run modes, start-up, the control operations behind the menu, and
// shutdown. The process-wide state and all that touches it are in this file's unnamed namespace.

#include "child.h"
#include "command_line.h"
#include "console.h"
#include "descriptors.h"
#include "directories.h"
#include "hub.h"
#include "interface.h"
#include "lan_address.h"
#include "ports.h"
#include "settings.h"
#include "suite.h"
#include "supervisor.h"
#include "tdgui.h"
#include "terminal.h"
#include "tools.h"
#include "version.h"

#include <atomic>
#include <cctype>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

// True while the run is meant to go on; never set back once cleared.
std::atomic<bool> g_running{true};
// The ports in force, 16 bits each, and the saved preference.
std::atomic<std::uint32_t> g_http_port{Ports{}.http};
std::atomic<std::uint32_t> g_udp_port{Ports{}.udp};
std::atomic<bool> g_open_browser{true};
// Guards the child list and every record in it from the end of start-up on.
std::mutex g_kids_mu;
// The terminal of the records that share it, and guarded as they are.
SharedTerminal g_terminal;
// True once everything has been stopped for good: nothing may be started again. Guarded by
// g_kids_mu.
bool g_stopped = false;
// How the control operations reach the child list: empty until start-up is complete.
std::function<Child *(const std::string &name)> g_find_child;
std::function<bool(int http, int udp, std::string &message)> g_apply_ports;
// The once-only quit; empty in a run that has a terminal.
std::function<void()> g_quit_hook;

// --- Signals ------------------------------------------------------------------------------------

void on_signal(int /*signal*/) {
  g_running = false;
}

/// SA_RESTART, which signal() need not set, keeps a signal from cutting a message short.
void handle_signal(int number, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigaction(number, &action, nullptr);
}

void handle_signal_unless_ignored(int number, void (*handler)(int)) {
  struct sigaction current = {};
  if (sigaction(number, nullptr, &current) == 0 && current.sa_handler != SIG_IGN) {
    handle_signal(number, handler);
  }
}

void install_signal_handlers() {
  handle_signal(SIGINT, on_signal);
  handle_signal(SIGTERM, on_signal);
  signal(SIGPIPE, SIG_IGN);
  // A closed terminal and Ctrl-\ end the run like Ctrl-C, unless the parent had the signal ignored,
  // as nohup does.
  handle_signal_unless_ignored(SIGHUP, on_signal);
  handle_signal_unless_ignored(SIGQUIT, on_signal);
  // At a limit on file sizes a write then fails, as on a full disk, instead of ending the process.
  handle_signal_unless_ignored(SIGXFSZ, [](int) {});
}

/// Blocks (SIG_BLOCK) or unblocks (SIG_UNBLOCK) on this thread the signals that end a run.
void mask_ending_signals(int how) {
  sigset_t ending;
  sigemptyset(&ending);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    sigaddset(&ending, number);
  }
  pthread_sigmask(how, &ending, nullptr);
}

// --- Ports in force -----------------------------------------------------------------------------

Ports current_ports() {
  return {static_cast<std::uint16_t>(g_http_port.load()),
          static_cast<std::uint16_t>(g_udp_port.load())};
}

void publish_ports(Ports ports) {
  g_http_port = ports.http;
  g_udp_port = ports.udp;
}

// --- Settings -----------------------------------------------------------------------------------

// Two numbers in the order in which the file has them.
// NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
void save_ports(std::uint16_t http, std::uint16_t udp) {
  write_settings(settings_path(), Settings{{http, udp}, g_open_browser});
}

// --- Control operations: what the menu calls ----------------------------------------------------

Child *find_child(const std::string &name) {
  return !g_stopped && g_find_child ? g_find_child(name) : nullptr;
}

/// Starts an idle record and has it supervised, with a fresh allowance of restarts.
bool start_supervised(Child &child) {
  child.supervised = true;
  child.restarts = 0;
  return spawn(child);
}

bool ctl_is_running(const std::string &name) {
  const std::lock_guard<std::mutex> lock(g_kids_mu);
  const Child *child = find_child(name);
  return child != nullptr && child->pid != -1;
}

void ctl_start(const std::string &name) {
  const std::lock_guard<std::mutex> lock(g_kids_mu);
  Child *child = find_child(name);
  if (child != nullptr && child->pid == -1 && !start_supervised(*child)) {
    std::fprintf(stderr, "Tandrel: could not start the %s\n", child->name.c_str());
  }
}

void ctl_stop(const std::string &name) {
  const std::lock_guard<std::mutex> lock(g_kids_mu);
  if (Child *child = find_child(name)) {
    child->supervised = false;
    stop(*child);
  }
}

void ctl_restart(const std::string &name) {
  const std::lock_guard<std::mutex> lock(g_kids_mu);
  Child *child = find_child(name);
  if (child == nullptr) {
    return;
  }
  stop(*child);
  if (!start_supervised(*child)) {
    std::fprintf(stderr, "Tandrel: could not restart the %s\n", child->name.c_str());
  }
}

// The interface's signature. NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
bool ctl_set_ports(int http, int udp, std::string &message) {
  const char *objection = check_ports(http, udp);
  if (objection == nullptr && g_apply_ports) {
    return g_apply_ports(http, udp, message);
  }
  message = objection != nullptr ? objection : "Not ready yet — try again in a moment.";
  return false;
}

int ctl_http_port() {
  return current_ports().http;
}

int ctl_udp_port() {
  return current_ports().udp;
}

bool ctl_open_browser_pref() {
  return g_open_browser;
}

void ctl_set_open_browser_pref(bool open) {
  g_open_browser = open;
  const Ports ports = current_ports();
  save_ports(ports.http, ports.udp);
}

/// Moves every record to the new ports. Nothing is rolled back on failure: the user picks another
/// port, or starts the components by hand on these.
bool apply_ports(Children &children, Ports ports, std::string &message) {
  const std::lock_guard<std::mutex> lock(g_kids_mu);
  stop_last_to_first(children);
  set_port_arguments(children, ports);
  Child *hub = g_stopped ? nullptr : find_by_name(children, "hub");
  const HubStart start = hub == nullptr
                             ? HubStart::not_spawned
                             : start_hub(*hub, ports.http, StartReason::port_change, g_running);
  if (start == HubStart::not_spawned) {
    message = "Could not restart the hub.";
    return false;
  }
  if (start == HubStart::not_ready) {
    message = "The hub would not start on port " + std::to_string(ports.http) +
              ". That port may be in use. Pick another.";
    return false;
  }
  for (Child &child : children) {
    if (&child != hub && child.supervised) {
      spawn(child);
    }
  }
  publish_ports(ports);
  save_ports(ports.http, ports.udp);
  return true;
}

/// Lets the control operations reach the list, which main owns.
void install_controls(Children &children) {
  static Children *s_children = nullptr;
  s_children = &children;
  g_find_child = [](const std::string &name) { return find_by_name(*s_children, name); };
  g_apply_ports = [](int http, int udp, std::string &message) {
    const Ports ports{static_cast<std::uint16_t>(http), static_cast<std::uint16_t>(udp)};
    return apply_ports(*s_children, ports, message);
  };
}

// --- Start-up -----------------------------------------------------------------------------------

/// Starts the hub and waits until it answers. On failure reports the reason and leaves nothing
/// running.
bool start_hub_or_report(Children &children) {
  Child &hub = children.front();
  const std::uint16_t port = current_ports().http;
  switch (start_hub(hub, port, StartReason::start_up, g_running)) {
  case HubStart::ready:
    return true;
  case HubStart::not_spawned:
    fatal_dialog("Cannot start the hub.\n\nExpected td_hub next to this program, at:\n" + hub.path +
                 "\n\nAll four binaries need to stay in the same folder.");
    return false;
  case HubStart::not_ready:
    break;
  }
  fatal_dialog("The hub did not start on port " + std::to_string(port) +
               ".\n\nAnother copy of Tandrel may already be running, or that port is in use.");
  for (Child &child : children) {
    stop(child);
  }
  return false;
}

/// Starts the receiver and the sender, unless an option left them out. The run goes on without one
/// that cannot be started.
void start_clients(Children &children) {
  for (auto child = std::next(children.begin()); child != children.end(); ++child) {
    if (child->supervised && !spawn(*child)) {
      std::fprintf(stderr, "Tandrel: could not start the %s (%s)\n", child->name.c_str(),
                   child->path.c_str());
    }
  }
}

std::string dashboard_url() {
  return "http://" + td_lan_ipv4() + ":" + std::to_string(current_ports().http) + "/";
}

/// Prints the banner and opens the dashboard when this run is to open it.
void show_dashboard(const std::string &url, const Options &options) {
  print_banner(url, options);
  if (options.open_browser) {
    open_browser(url);
  }
  if (options.verbose) {
    print_verbose_note();
  }
}

// --- Running and shutdown -----------------------------------------------------------------------

void stop_all(Children &children) {
  std::puts("\nTandrel: stopping...");
  const std::lock_guard<std::mutex> lock(g_kids_mu);
  stop_last_to_first(children);
  g_stopped = true;
  std::puts("Tandrel: stopped.");
}

void run_in_console(Children &children) {
  supervise(children, g_kids_mu, g_running);
  stop_all(children);
}

std::thread start_supervisor(Children &children) {
  try {
    return std::thread([&children] { supervise(children, g_kids_mu, g_running); });
  } catch (const std::system_error &error) {
    // The exception ends the process, so the components are stopped first.
    const std::lock_guard<std::mutex> lock(g_kids_mu);
    stop_last_to_first(children);
    throw std::system_error(error.code(), "thread constructor failed");
  }
}

void invoke_quit_hook() {
  if (g_quit_hook) {
    g_quit_hook();
  }
}

tdgui::GuiConfig make_gui_config(const Children &children, const std::string &url) {
  tdgui::GuiConfig config;
  config.url = url;
  config.status = std::string("Tandrel ") + version;
  for (const Child &child : children) {
    std::string label = child.name;
    if (!label.empty()) {
      label[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(label[0])));
    }
    config.components.push_back({child.name, label});
  }
  config.is_running = ctl_is_running;
  config.start = ctl_start;
  config.stop = ctl_stop;
  config.restart = ctl_restart;
  config.quit = invoke_quit_hook;
  config.set_ports = ctl_set_ports;
  config.http_port = ctl_http_port;
  config.udp_port = ctl_udp_port;
  config.open_browser_pref = ctl_open_browser_pref;
  config.set_open_browser_pref = ctl_set_open_browser_pref;
  return config;
}

/// Makes g_quit_hook stop everything, once; a second caller waits until that is done. It also runs
/// at exit, because the interface may end the process with exit(), on any thread. So its state is
/// static and initialised before the registration, which has it destroyed after the hook has run;
/// main's list still exists then.
void install_quit_hook(Children &children) {
  static std::atomic<bool> s_done{false};
  static std::mutex s_quit_mu;
  static std::function<void()> s_stop_all;
  s_stop_all = [&children] { stop_all(children); };
  g_quit_hook = [] {
    const std::lock_guard<std::mutex> lock(s_quit_mu);
    if (!s_done.exchange(true)) {
      g_running = false; // first, so that the supervisor restarts nothing that is about to end
      s_stop_all();
    }
  };
  std::atexit(invoke_quit_hook);
}

/// Shows the menu-bar icon until Quit; if none can be shown, waits for a signal that ends the run.
/// The supervisor starts before the search for the interface, which a slow display may delay.
void run_without_terminal(const std::string &directory, Children &children,
                          const std::string &url) {
  // First of all, because a window system's libraries may end the process while they are loaded.
  install_quit_hook(children);
  platform::start_interface_search(directory);
  std::thread supervisor = start_supervisor(children);
  // As long as these signals end the run, they should interrupt the supervisor's pause.
  mask_ending_signals(SIG_BLOCK);
  const platform::RunFunction run_interface = platform::find_interface(directory, g_running);
  // Registered again to run first: an exit handler of the libraries that were loaded meanwhile may
  // never return.
  std::atexit(invoke_quit_hook);
  if (run_interface != nullptr && g_running) {
    mask_ending_signals(SIG_UNBLOCK);
    run_interface(make_gui_config(children, url));
    g_running = false;
  }
  supervisor.join();
  invoke_quit_hook();
}

/// Copes with a parent that closed standard streams or blocked signals, and saves the environment
/// for the components.
void take_over_inherited_state() {
  keep_environment();
  open_closed_standard_streams();
  mask_ending_signals(SIG_UNBLOCK); // the components would inherit the mask
}

/// Asked at the start, because a terminal that has been closed no longer counts as one.
bool has_terminal() {
  return isatty(STDIN_FILENO) != 0 || isatty(STDOUT_FILENO) != 0;
}

void run_until_stopped(const std::string &directory, bool in_terminal, Children &children,
                       const std::string &url) {
  if (in_terminal) {
    run_in_console(children);
  } else {
    run_without_terminal(directory, children, url);
  }
}

/// Pass-through: runs one component with the arguments after its name and returns its status.
int run_component(const std::string &directory, int argc, char **argv) {
  Child child = make_child(directory, argv[1], {argv + 2, argv + argc});
  child.name = std::string("td_") + argv[1];
  child.supervised = true;
  if (!spawn(child, SpawnMode::pass_through)) {
    std::fprintf(stderr,
                 "Tandrel: cannot start %s\n"
                 "              expected it next to this program, at:\n"
                 "                %s\n",
                 child.name.c_str(), child.path.c_str());
    return 1;
  }
  const int status = wait_for_exit(child).value_or(0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

/// Returns false, after a message, if an argument is not an option.
bool parse_or_report(int argc, char **argv, Options &options) {
  const char *unknown = parse_options(argc, argv, options);
  if (unknown != nullptr) {
    std::fprintf(stderr, "Tandrel: unknown option '%s'\n\n", unknown);
    print_usage();
  }
  return unknown == nullptr;
}

} // namespace

int main(int argc, char **argv) {
  // Every line is written at once, also to a pipe or a log file.
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const std::string directory = td::executable_dir();
  // If the parent ignored SIGCHLD, the kernel would reap the components and lose their statuses.
  signal(SIGCHLD, SIG_DFL);

  switch (choose_mode(argc, argv)) {
  case Mode::help:
    print_usage();
    return 0;
  case Mode::pass_through:
    return run_component(directory, argc, argv);
  case Mode::all_in_one:
    break;
  }

  take_over_inherited_state();
  const bool in_terminal = has_terminal();
  Options options(read_settings(settings_path(), g_open_browser));
  g_open_browser = options.open_browser; // as saved: the arguments decide for this run only
  if (!parse_or_report(argc, argv, options)) {
    return 1;
  }
  install_signal_handlers();
  publish_ports(options.ports);

  Children children = make_children(directory, options, &g_terminal);
  print_title(version);
  if (!start_hub_or_report(children)) {
    return 1;
  }
  start_clients(children);
  const std::string url = dashboard_url();
  show_dashboard(url, options);

  install_controls(children);
  run_until_stopped(directory, in_terminal, children, url);
  // Nothing uses the list after this, so the pointer that install_controls keeps may dangle.
  return 0; // NOLINT(clang-analyzer-core.StackAddressEscape)
}
