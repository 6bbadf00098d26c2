/// Starts programs that do not become children of this process.
#pragma once

#include <string>
#include <vector>

namespace td {

/// Runs `command`, a shell command in which "$@" stands for `arguments`, and does not wait for it:
/// a shell starts it in the background and exits, and only that shell is waited for. The program
/// gets a new session, default signal handling and mask, /dev/null as standard input, output and
/// error, and no other descriptor of this process. Returns false when no shell could be started.
/// Any thread.
bool run_detached(const std::string &command, const std::vector<std::string> &arguments);

} // namespace td
