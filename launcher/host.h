/// What the launcher asks of the machine it runs on: a shell command, the address by which others
/// reach this machine, a browser, an alert. None of it keeps state.
#pragma once

#include <string>
#include <vector>

struct ifaddrs; // NOLINT(readability-identifier-naming): the system's name

/// Runs a command line with the shell and waits for it. Unlike system(3), which ignores SIGINT
/// meanwhile and so loses a Ctrl-C, it leaves SIGINT's action in this process as it is.
/// `variables`, each "NAME=value", are added to the command's environment. True: it exited with
/// status 0. False: any other end; also a shell that could not be started or waited for.
bool run_tool(const std::string &command, const std::vector<std::string> &variables = {});

/// The dotted-quad IPv4 address by which other machines on the local network reach this one;
/// "127.0.0.1" when there is none.
std::string td_lan_ipv4();

/// The choice that td_lan_ipv4 makes: of the interfaces that are up, the first private address
/// (10/8, 172.16/12, 192.168/16), else the first other one that is neither loopback nor link-local,
/// else "127.0.0.1". `list` may be null and stays the caller's.
std::string choose_lan_ipv4(const ifaddrs *list);

/// Opens `url` in the default browser; does not wait for the browser to end. Whether it opened is
/// not known.
void open_browser(const std::string &url);

/// Writes the message and a line feed to standard error, then shows it in a critical alert and
/// returns when that is dismissed (at once when none can be shown). No alert shows a message that
/// platform::alert_command() cannot quote.
void fatal_dialog(const std::string &message);
