/// What the launcher asks of the machine it runs on: whether the hub answers, which address others
/// reach this machine by, a browser, an alert. None of it keeps state.
#pragma once

#include <cstdint>
#include <string>

struct ifaddrs;

/// How an outside tool ended.
enum class ToolEnd {
  success,     ///< exit status 0
  failure,     ///< any other end, a shell that could not be started included
  interrupted, ///< ended by SIGINT: somebody pressed Ctrl-C while it ran
};

/// Runs a command line with the shell and waits for it. SIGINT keeps its meaning in this process
/// meanwhile, unlike with system(3), which ignores it and so loses a Ctrl-C of the user's.
ToolEnd run_tool(const std::string &command);

/// Asks the hub on this machine for its health once, for at most about 2 s. `success` means that a
/// complete HTTP answer came, whatever its status code.
ToolEnd probe_hub(std::uint16_t http_port);

/// Whether anything on this machine takes connections on a TCP port of 127.0.0.1. Blocks for
/// at most 100 ms.
bool answers_on_loopback(std::uint16_t port);

/// The dotted-quad IPv4 address by which other machines on the local network reach this one;
/// "127.0.0.1" when there is none.
std::string td_lan_ipv4();

/// The choice that td_lan_ipv4 makes: of the interfaces that are up, the first private address
/// (10/8, 172.16/12, 192.168/16), else the first other one that is neither loopback nor link-local,
/// else "127.0.0.1". `list` may be null and stays the caller's.
std::string choose_lan_ipv4(const ifaddrs *list);

/// Opens `url` in the default browser; does not wait for the browser to end. `interrupted`: Ctrl-C
/// was pressed meanwhile. Nothing else is known of the outcome.
ToolEnd open_browser(const std::string &url);

/// Writes the message and a line feed to standard error, then shows it in a critical alert and
/// returns when that is dismissed (at once when none can be shown). A message with a single quote
/// is not shown in an alert, and no shell ever sees it: a folder's name must not run as a command.
void fatal_dialog(const std::string &message);
