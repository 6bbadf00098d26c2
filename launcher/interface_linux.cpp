#include "interface.h"
#include "trial.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using AvailableFunction = bool (*)();
using ModuleRunFunction = void (*)(const tdgui::GuiConfig *);

constexpr std::chrono::seconds search_limit{10};

pid_t g_trial = -1; // of the module; -1: there is none
ModuleRunFunction g_module_run = nullptr;

void report_unavailable(const std::string &reason) {
  std::fprintf(stderr, "Tandrel: the menu-bar interface is not available: %s.\n", reason.c_str());
}

/// A path for dlopen(), which would replace "$LIB" and the like in a folder's name: such a folder
/// is named by a descriptor, which stays open like the module.
std::string loadable_path(const std::string &directory) {
  if (directory.find('$') == std::string::npos) {
    return directory + "tdgui.so";
  }
  const int folder = open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  return "/proc/self/fd/" + std::to_string(folder) + "/tdgui.so";
}

template <typename Function> Function find_function(void *module, const char *name) {
  void *const found = dlsym(module, name);
  if (found == nullptr) {
    report_unavailable(dlerror());
  }
  return reinterpret_cast<Function>(found);
}

/// Returns the module's function that checks whether the interface can be shown; null after a
/// message.
AvailableFunction load_module(const std::string &directory) {
  // The module stays loaded until the process ends.
  void *const module = dlopen(loadable_path(directory).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    report_unavailable(dlerror());
    return nullptr;
  }
  const auto available = find_function<AvailableFunction>(module, "tdgui_available");
  g_module_run = find_function<ModuleRunFunction>(module, "tdgui_run");
  return g_module_run == nullptr ? nullptr : available;
}

/// What the trial runs: a display may not answer, and a toolkit without one ends the process.
int try_module(const void *directory) {
  const AvailableFunction available = load_module(*static_cast<const std::string *>(directory));
  return available != nullptr && available() ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// Whether the trial has succeeded. If it failed with an exit status, it has printed the reason.
bool has_succeeded(std::optional<int> status) {
  if (!status) {
    report_unavailable("the display does not answer");
  } else if (WIFSIGNALED(*status)) {
    report_unavailable("the search for it was ended by signal " +
                       std::to_string(WTERMSIG(*status)));
  }
  return status == 0;
}

void run_module(const tdgui::GuiConfig &config) {
  g_module_run(&config);
}

} // namespace

namespace platform {

void start_interface_search(const std::string &directory) {
  if (access((directory + "tdgui.so").c_str(), F_OK) != 0) {
    return; // built without it: not a failure
  }
  g_trial = start_trial(try_module, &directory);
  if (g_trial == -1) {
    report_unavailable(std::strerror(errno));
  }
}

RunFunction find_interface(const std::string &directory, const std::atomic<bool> &running) {
  if (g_trial == -1) {
    return nullptr;
  }
  const std::optional<int> status = finish_trial(g_trial, search_limit, running);
  if (!running || !has_succeeded(status) || load_module(directory) == nullptr) {
    return nullptr;
  }
  return run_module;
}

} // namespace platform
