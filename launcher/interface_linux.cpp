#include "platform.h"

#include <dlfcn.h>

namespace {

using AvailableFunction = bool (*)();
using ModuleRunFunction = void (*)(const tdgui::GuiConfig *);

ModuleRunFunction g_module_run = nullptr;

void run_module(const tdgui::GuiConfig &config) {
  g_module_run(&config);
}

} // namespace

namespace platform {

RunFunction find_interface(const std::string &directory) {
  // The module stays loaded until the process ends.
  void *module = dlopen((directory + "tdgui.so").c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    return nullptr;
  }
  auto *const available = reinterpret_cast<AvailableFunction>(dlsym(module, "tdgui_available"));
  g_module_run = reinterpret_cast<ModuleRunFunction>(dlsym(module, "tdgui_run"));
  if (available == nullptr || g_module_run == nullptr || !available()) {
    return nullptr;
  }
  return run_module;
}

} // namespace platform
