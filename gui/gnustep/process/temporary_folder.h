/// Where GNUstep keeps its sockets and locks.
#pragma once

#include <string>

namespace td {

/// The first folder that TEMP, TMP or TMPDIR names and in which files can be made; without one
/// /tmp, or if that cannot be used either, XDG_RUNTIME_DIR's. GNUstep itself knows TEMP, TMP and
/// /tmp, and uses the first one named even where it does not exist. "/tmp" when no folder can be
/// used: the clipboard does not work then. Any thread.
std::string temporary_folder();

} // namespace td
