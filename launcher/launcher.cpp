// The launcher itself: entry and run modes, start-up, the control operations behind the menu, and
// shutdown. The process-wide state and all that touches it stand in this file's one local scope.

#include "child.h"
#include "children.h"
#include "command_line.h"
#include "console.h"
#include "directories.h"
#include "host.h"
#include "pause.h"
#include "platform.h"
#include "settings.h"
#include "supervisor.h"
#include "tdgui.h"

#include <atomic>
#include <cctype>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
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

constexpr const char *version = "1.4.4+412";
constexpr int hub_attempts = 100;
constexpr int looks_at_doubtful_hub = 10;
constexpr std::chrono::milliseconds hub_interval{100};

// True while the run is meant to go on; never set back once cleared.
std::atomic<bool> g_running{true};
// The ports in force, 16 bits each, and the saved preference.
std::atomic<std::uint32_t> g_http_port{default_http_port};
std::atomic<std::uint32_t> g_udp_port{default_udp_port};
std::atomic<bool> g_open_browser{true};
// Guards the child list and every record in it from the end of start-up on.
std::mutex g_kids_mu;
// How the control operations reach the child list: empty until start-up is complete.
std::function<Child *(const std::string &name)> g_find_child;
std::function<bool(int http, int udp, std::string &message)> g_apply_ports;
// The once-only quit; empty outside menu-bar mode.
std::function<void()> g_quit_hook;

// --- Signals ------------------------------------------------------------------------------------

void on_signal(int /*signal*/) {
  g_running = false;
}

/// Not by signal(), which leaves it to the system whether a handler cuts a write short: a message
/// is written whole whatever arrives meanwhile.
void handle_signal(int number) {
  struct sigaction action {};
  action.sa_handler = on_signal;
  action.sa_flags = SA_RESTART;
  sigaction(number, &action, nullptr);
}

void install_signal_handlers() {
  handle_signal(SIGINT);
  handle_signal(SIGTERM);
  signal(SIGPIPE, SIG_IGN);
  // A closed terminal ends the run like Ctrl-C, unless nohup asked for it to go on.
  struct sigaction hangup {};
  if (sigaction(SIGHUP, nullptr, &hangup) == 0 && hangup.sa_handler != SIG_IGN) {
    handle_signal(SIGHUP);
  }
}

/// A Ctrl-C that ended an outside tool was meant for the launcher.
void heed(ToolEnd end) {
  if (end == ToolEnd::interrupted) {
    g_running = false;
  }
}

// --- Settings -----------------------------------------------------------------------------------

std::string settings_path() {
  return td::config_dir() + "launcher.json";
}

Settings load_settings() {
  Settings saved = read_settings(settings_path(), g_open_browser);
  g_open_browser = saved.open_browser;
  return saved;
}

void save_ports(std::uint16_t http, std::uint16_t udp) {
  write_settings(settings_path(), Settings{http, udp, g_open_browser});
}

std::uint16_t current_http_port() {
  return static_cast<std::uint16_t>(g_http_port.load());
}

std::uint16_t current_udp_port() {
  return static_cast<std::uint16_t>(g_udp_port.load());
}

/// Puts two ports in force, each cut to its low 16 bits.
void publish_ports(int http, int udp) {
  g_http_port = static_cast<std::uint16_t>(http);
  g_udp_port = static_cast<std::uint16_t>(udp);
}

// --- Waiting for the hub ------------------------------------------------------------------------

enum class HubAnswer { ready, silent, gone };

/// Whether the hub is still there after some looks 100 ms apart.
bool outlives(Child &hub, int looks) {
  for (int look = 0; look < looks; ++look) {
    if (reap(hub)) {
      return false;
    }
    pause_for(hub_interval);
  }
  return !reap(hub);
}

/// Asks the hub once. What answers is our hub only if our hub lives. Where the port was taken
/// before it started, another copy answers while ours may not have come to its end yet, so it is
/// given some time for that.
HubAnswer ask_hub(Child &hub, std::uint16_t http_port, bool port_was_taken) {
  const ToolEnd probe = probe_hub(http_port);
  heed(probe);
  const bool answered = probe == ToolEnd::success;
  if (!outlives(hub, answered && port_was_taken ? looks_at_doubtful_hub : 0)) {
    return HubAnswer::gone;
  }
  return answered ? HubAnswer::ready : HubAnswer::silent;
}

/// What a start of the hub belongs to. A signal ends start-up, but a port change sees itself
/// through; start-up asks at once, a port change after the first interval.
enum class Occasion { start_up, port_change };

enum class HubStart { ready, not_spawned, not_ready };

/// Starts the hub and waits until it answers on its dashboard port.
HubStart start_hub(Child &hub, std::uint16_t http_port, Occasion occasion) {
  const bool port_was_taken = answers_on_loopback(http_port);
  if (!spawn(hub)) {
    return HubStart::not_spawned;
  }
  for (int attempt = 0; attempt < hub_attempts; ++attempt) {
    if (attempt > 0 || occasion == Occasion::port_change) {
      pause_for(hub_interval);
    }
    if (occasion == Occasion::start_up && !g_running) {
      break;
    }
    const HubAnswer answer = ask_hub(hub, http_port, port_was_taken);
    if (answer != HubAnswer::silent) {
      return answer == HubAnswer::ready ? HubStart::ready : HubStart::not_ready;
    }
  }
  return HubStart::not_ready;
}

// --- Control operations: what the menu calls -----------------------------------------------------

Child *find_child(const std::string &name) {
  return g_find_child ? g_find_child(name) : nullptr;
}

/// Starts an idle record because the user wants it running.
bool start_wanted(Child &child) {
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
  if (child != nullptr && child->pid == -1 && !start_wanted(*child)) {
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
  if (!start_wanted(*child)) {
    std::fprintf(stderr, "Tandrel: could not restart the %s\n", child->name.c_str());
  }
}

bool ctl_set_ports(int http, int udp, std::string &message) {
  constexpr int highest_port = 65535;
  constexpr int lowest_free_port = 1024;
  if (http < 1 || http > highest_port || udp < 1 || udp > highest_port) {
    message = "Ports must be between 1 and 65535.";
  } else if (http == udp) {
    message = "The dashboard and control ports must be different.";
  } else if (http < lowest_free_port || udp < lowest_free_port) {
    message = "Ports below 1024 need administrator privileges; pick higher ones.";
  } else if (!g_apply_ports) {
    message = "Not ready yet — try again in a moment.";
  } else {
    return g_apply_ports(http, udp, message);
  }
  return false;
}

int ctl_http_port() {
  return current_http_port();
}

int ctl_udp_port() {
  return current_udp_port();
}

bool ctl_open_browser_pref() {
  return g_open_browser;
}

void ctl_set_open_browser_pref(bool open) {
  g_open_browser = open;
  save_ports(current_http_port(), current_udp_port());
}

/// Moves every record to the new ports. Nothing is rolled back on failure: the user picks another
/// port, or starts the components by hand on these.
bool apply_ports(Children &children, std::uint16_t http, std::uint16_t udp, std::string &message) {
  const std::lock_guard<std::mutex> lock(g_kids_mu);
  stop_last_to_first(children);
  aim_at_ports(children, http, udp);
  Child *hub = find_by_name(children, "hub");
  const HubStart start =
      hub == nullptr ? HubStart::not_spawned : start_hub(*hub, http, Occasion::port_change);
  if (start == HubStart::not_spawned) {
    message = "Could not restart the hub.";
    return false;
  }
  if (start == HubStart::not_ready) {
    message = "The hub would not start on port " + std::to_string(http) +
              ". That port may be in use. Pick another.";
    return false;
  }
  for (Child &child : children) {
    if (&child != hub && child.supervised) {
      spawn(child);
    }
  }
  publish_ports(http, udp);
  save_ports(http, udp);
  return true;
}

/// Makes the list reachable for the control operations. The menu's callbacks are plain functions,
/// so they find it through a static pointer; the list itself stays main's.
void install_controls(Children &children) {
  static Children *s_children = nullptr;
  s_children = &children;
  g_find_child = [](const std::string &name) { return find_by_name(*s_children, name); };
  g_apply_ports = [](int http, int udp, std::string &message) {
    return apply_ports(*s_children, static_cast<std::uint16_t>(http),
                       static_cast<std::uint16_t>(udp), message);
  };
}

// --- Start-up -----------------------------------------------------------------------------------

/// Starts the hub and waits until it answers. False when it did not come to that: the user has been
/// told why, and nothing is left running.
bool bring_up_hub(Children &children) {
  Child &hub = children.front();
  switch (start_hub(hub, current_http_port(), Occasion::start_up)) {
  case HubStart::ready:
    return true;
  case HubStart::not_spawned:
    fatal_dialog("Cannot start the hub.\n\nExpected td_hub next to this program, at:\n" + hub.path +
                 "\n\nAll four binaries need to stay in the same folder.");
    return false;
  case HubStart::not_ready:
    break;
  }
  fatal_dialog("The hub did not start on port " + std::to_string(current_http_port()) +
               ".\n\nAnother copy of Tandrel may already be running, or that port is in use.");
  for (Child &child : children) {
    stop(child);
  }
  return false;
}

/// Starts the receiver and the sender as far as this run wants them; it goes on without one that
/// cannot be started.
void start_clients(Children &children) {
  for (auto child = std::next(children.begin()); child != children.end(); ++child) {
    if (child->supervised && !spawn(*child)) {
      std::fprintf(stderr, "Tandrel: could not start the %s (%s)\n", child->name.c_str(),
                   child->path.c_str());
    }
  }
}

std::string dashboard_url() {
  return "http://" + td_lan_ipv4() + ":" + std::to_string(current_http_port()) + "/";
}

/// Says that the suite is up, in the console and, when this run wants that, in the browser.
void announce(const std::string &url, const Options &options) {
  print_banner(url, options);
  if (options.open_browser) {
    heed(open_browser(url));
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
    // Nothing can watch the components, so none is left behind; then the failure goes on its way
    // and ends the process.
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

/// The interface may end the process from inside its own Quit, so what that needs is static.
void run_in_menu_bar(platform::Interface run_interface, Children &children,
                     const std::string &url) {
  std::thread supervisor = start_supervisor(children);
  static std::atomic<bool> s_done{false};
  static std::function<void()> s_stop_all;
  s_stop_all = [&children] { stop_all(children); };
  g_quit_hook = [] {
    if (!s_done.exchange(true)) {
      g_running = false; // first, so that the supervisor restarts nothing that is about to end
      s_stop_all();
    }
  };

  run_interface(make_gui_config(children, url));

  g_running = false;
  supervisor.join();
  if (!s_done.exchange(true)) {
    s_stop_all();
  }
}

/// In the console when there is a terminal; otherwise behind the menu-bar icon, or without either
/// where no icon can be shown.
void run_until_stopped(const std::string &directory, Children &children, const std::string &url) {
  const bool in_terminal = isatty(STDIN_FILENO) != 0 || isatty(STDOUT_FILENO) != 0;
  const platform::Interface interface = in_terminal ? nullptr : platform::find_interface(directory);
  if (interface != nullptr) {
    run_in_menu_bar(interface, children, url);
  } else {
    run_in_console(children);
  }
}

/// Runs one component in the launcher's place, as far as its caller can tell.
int run_component(const std::string &directory, int argc, char **argv) {
  Child child = make_child(directory, argv[1], {argv + 2, argv + argc});
  child.name = std::string("td_") + argv[1];
  child.supervised = true;
  if (!spawn(child, Inherit::everything)) {
    std::fprintf(stderr,
                 "Tandrel: cannot start %s\n"
                 "              expected it next to this program, at:\n"
                 "                %s\n",
                 child.name.c_str(), child.path.c_str());
    return 1;
  }
  const int status = wait_for_exit(child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

} // namespace

int main(int argc, char **argv) {
  // Every line appears at once, in a pipe or a log file too.
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const std::string directory = td::executable_dir();
  // A parent that ignores SIGCHLD passes that on, and children would then be reaped unseen.
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

  Options options(load_settings());
  if (const char *unknown = parse_options(argc, argv, options)) {
    std::fprintf(stderr, "Tandrel: unknown option '%s'\n\n", unknown);
    print_usage();
    return 1;
  }
  install_signal_handlers();
  publish_ports(options.http_port, options.udp_port);

  Children children = make_children(directory, options, current_http_port(), current_udp_port());
  print_title(version);
  if (!bring_up_hub(children)) {
    return 1;
  }
  start_clients(children);
  const std::string url = dashboard_url();
  announce(url, options);

  install_controls(children);
  run_until_stopped(directory, children, url);
  // Nothing uses the list after this, so the pointer that install_controls keeps may dangle.
  return 0; // NOLINT(clang-analyzer-core.StackAddressEscape)
}
