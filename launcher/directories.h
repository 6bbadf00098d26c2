/// Where the launcher's executables and its settings live. Nothing is cached and nothing fails;
/// every result ends in "/", ready for a file name. Safe to call from any thread.
#pragma once

#include <string>

namespace td {

/// The folder of the running launcher, by the path it was started by: a start through a link gives
/// the link's folder. "./" if the path is unknown.
std::string executable_dir();

/// The folder of an executable's path; "./" when the path has none.
std::string directory_of(const std::string &executable_path);

/// The folder of the settings file, made when it is missing: in an application bundle the user's
/// Application Support folder, otherwise (or when that cannot be made) the folder "config" beside
/// the launcher, otherwise the launcher's own folder.
std::string config_dir();

/// The choice that config_dir makes for a launcher in `exe` (which ends in "/") and the value of
/// the variable HOME, null when unset. May make up to two folders.
std::string config_dir_for(const std::string &exe, const char *home);

} // namespace td
