#include "platform.h"

#include <cstdio>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

using AvailableFunction = bool (*)();
using ModuleRunFunction = void (*)(const tdgui::GuiConfig *);

ModuleRunFunction g_module_run = nullptr;

/// Says what the dynamic loader has said.
void report_unavailable() {
  std::fprintf(stderr, "Tandrel: the menu-bar interface is not available: %s.\n", dlerror());
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
    report_unavailable();
  }
  return reinterpret_cast<Function>(found);
}

void run_module(const tdgui::GuiConfig &config) {
  g_module_run(&config);
}

} // namespace

namespace platform {

RunFunction find_interface(const std::string &directory) {
  if (access((directory + "tdgui.so").c_str(), F_OK) != 0) {
    return nullptr; // built without it: nothing to report
  }
  // The module stays loaded until the process ends.
  void *const module = dlopen(loadable_path(directory).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    report_unavailable();
    return nullptr;
  }
  const auto available = find_function<AvailableFunction>(module, "tdgui_available");
  g_module_run = find_function<ModuleRunFunction>(module, "tdgui_run");
  if (available == nullptr || g_module_run == nullptr || !available()) {
    return nullptr;
  }
  return run_module;
}

} // namespace platform
