#include "osascript.h"
#include "platform.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <dlfcn.h>
#include <sys/auxv.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::size_t path_capacity = 4096; // with the terminating NUL

bool in_directory(std::string_view directory, std::string_view tool) {
  // An empty element of PATH is the current folder.
  std::string path(directory.empty() ? std::string_view{"."} : directory);
  path.append("/").append(tool);
  return access(path.c_str(), X_OK) == 0;
}

/// Whether the shell would find `tool` on the PATH.
bool on_path(std::string_view tool) {
  const char *variable = std::getenv("PATH");
  if (variable == nullptr) {
    return false;
  }
  for (std::string_view rest = variable;;) {
    const std::size_t colon = rest.find(':');
    if (in_directory(rest.substr(0, colon), tool)) {
      return true;
    }
    if (colon == std::string_view::npos) {
      return false;
    }
    rest.remove_prefix(colon + 1);
  }
}

using AvailableFunction = bool (*)();
using RunFunction = void (*)(const tdgui::GuiConfig *);

RunFunction g_module_run = nullptr;

void run_module(const tdgui::GuiConfig &config) {
  g_module_run(&config);
}

} // namespace

namespace platform {

std::string executable_path() {
  // What the kernel was given to execute. /proc/self/exe would resolve links.
  const unsigned long address = getauxval(AT_EXECFN);
  const char *path = reinterpret_cast<const char *>(address); // NOLINT(performance-no-int-to-ptr)
  if (path == nullptr || strnlen(path, path_capacity) == path_capacity) {
    return "";
  }
  return path;
}

void close_descriptors_from(int first) {
  // The system call itself: it is one step whatever the number of descriptors, and a kernel
  // without it (before 5.9) is met by the loop.
  if (syscall(SYS_close_range, static_cast<unsigned>(first), ~0U, 0U) == 0) {
    return;
  }
  const long limit = sysconf(_SC_OPEN_MAX);
  for (int descriptor = first; descriptor < limit; ++descriptor) {
    close(descriptor);
  }
}

std::string browser_command(const std::string &url) {
  // In the background: where no desktop takes the address over, these tools become the browser and
  // stay for as long as it is open.
  const char *tool = on_path("open") ? "open" : "xdg-open";
  return std::string(tool) + " \"" + url + "\" &";
}

std::string alert_command(const std::string &message) {
  struct Tool {
    const char *name;
    const char *options; ///< end where the message, in single quotes, goes
  };
  constexpr std::array tools{
      Tool{"zenity", "--error --title Tandrel --no-markup --text "},
      Tool{"kdialog", "--title Tandrel --error "},
      Tool{"xmessage", "-title Tandrel -center "},
  };
  if (on_path("osascript")) {
    return osascript_command(message);
  }
  for (const Tool &tool : tools) {
    if (on_path(tool.name)) {
      return std::string(tool.name) + " " + tool.options + "'" + message + "' >/dev/null 2>&1";
    }
  }
  return "";
}

Interface find_interface(const std::string &directory) {
  // The module stays loaded until the process ends.
  void *module = dlopen((directory + "tdgui.so").c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    return nullptr;
  }
  auto *const available = reinterpret_cast<AvailableFunction>(dlsym(module, "tdgui_available"));
  g_module_run = reinterpret_cast<RunFunction>(dlsym(module, "tdgui_run"));
  if (available == nullptr || g_module_run == nullptr || !available()) {
    return nullptr;
  }
  return run_module;
}

} // namespace platform
