/// The outside tools that the launcher runs through the shell: any command, the one that opens the
/// browser, the one that shows an alert.
#pragma once

#include <string>
#include <vector>

/// Runs a command line with the shell and waits for it. Unlike system(3), which ignores SIGINT
/// meanwhile and so loses a Ctrl-C, it leaves SIGINT's action in this process as it is.
/// `variables`, each "NAME=value", are added to the command's environment. True: it exited with
/// status 0. False: any other end; also a shell that could not be started or waited for.
bool run_tool(const std::string &command, const std::vector<std::string> &variables = {});

/// Opens `url` in the default browser; does not wait for the browser to end. Whether it opened is
/// not known.
void open_browser(const std::string &url);

/// Writes the message and a line feed to standard error, then shows it in a critical alert and
/// returns when that is dismissed (at once when none can be shown). No alert shows a message that
/// platform::alert_command() cannot quote.
void fatal_dialog(const std::string &message);
