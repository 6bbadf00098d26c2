#include "osascript.h"
#include "platform.h"

#include <algorithm>
#include <cstring>

#include <dlfcn.h>
#include <sys/auxv.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::size_t path_capacity = 4096; // with the terminating NUL

// Closing one by one stops here: in containers the limit on descriptors can be 1,000,000,000.
constexpr long highest_descriptor_tried = 65536;

using AvailableFunction = bool (*)();
using ModuleRunFunction = void (*)(const tdgui::GuiConfig *);

ModuleRunFunction g_module_run = nullptr;

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
  // The system call itself: one step whatever the number of descriptors. A kernel before 5.9 does
  // not have it; then the loop below closes them one by one.
  if (syscall(SYS_close_range, static_cast<unsigned>(first), ~0U, 0U) == 0) {
    return;
  }
  const long limit = sysconf(_SC_OPEN_MAX);
  const long end = limit < 0 ? highest_descriptor_tried : std::min(limit, highest_descriptor_tried);
  for (int descriptor = first; descriptor < end; ++descriptor) {
    close(descriptor);
  }
}

std::string browser_command(const std::string &url) {
  // In the background: without a desktop these tools run the browser themselves and end only when
  // it does.
  return "if command -v open >/dev/null; then open \"" + url + "\"; else xdg-open \"" + url +
         "\"; fi &";
}

std::string alert_command(const std::string &message) {
  // Without a UTF-8 locale zenity shows no message that goes beyond ASCII.
  return "if command -v osascript; then " + osascript_command(message) +
         "; elif command -v zenity; then LC_CTYPE=C.UTF-8 zenity --error --title Tandrel "
         "--no-markup --text '" +
         message + "'; elif command -v kdialog; then kdialog --title Tandrel --error '" + message +
         "'; elif command -v xmessage; then xmessage -title Tandrel -center '" + message +
         "'; fi >/dev/null 2>&1";
}

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
