/// Programs started beside the launcher that are none of its children.
#pragma once

#include <string>
#include <vector>

namespace td {

/// Runs `command`, a line of shell in which "$@" stands for `arguments`, and does not wait for it:
/// a shell puts it in the background and ends, and only that shell is waited for. The program gets
/// a session of its own, default signals, no input, no output and no other open file of this
/// process. Returns false when no shell could be started. Any thread.
bool run_detached(const std::string &command, const std::vector<std::string> &arguments);

} // namespace td
