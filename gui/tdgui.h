/// The only header shared by the launcher and its menu-bar interface.
///
/// The launcher fills a GuiConfig and calls run() on its main thread; the interface shows what the
/// GuiConfig holds and calls its callbacks. The interface knows nothing about processes, ports or
/// settings, and the launcher nothing about windows.
#pragma once

#include <string>
#include <vector>

namespace tdgui {

/// One row of the menu.
struct Component {
  std::string name;  ///< the argument of the callbacks: "hub", "receiver" or "sender"
  std::string label; ///< what the menu shows, UTF-8
};

/// Everything the interface shows or does. Strings are UTF-8. A callback may be null: the interface
/// then does without it. Every callback is called on the main thread, does its own locking, and may
/// block for as long as its work takes.
struct GuiConfig {
  std::string url;                   ///< dashboard address: shown, opened and copied by the menu
  std::string status;                ///< header line of the menu
  std::vector<Component> components; ///< rows of the menu, in display order

  /// Whether the named component's process is running.
  bool (*is_running)(const std::string &name) = nullptr;
  /// Starts the named component; a running one is left alone.
  void (*start)(const std::string &name) = nullptr;
  /// Stops the named component; returns when its process is gone.
  void (*stop)(const std::string &name) = nullptr;
  /// Stops and starts the named component.
  void (*restart)(const std::string &name) = nullptr;
  /// Stops everything, once; called before the application terminates.
  void (*quit)() = nullptr;
  /// Moves the hub to other ports. On failure returns false and fills `error` with a text for the
  /// user; on success leaves `error` alone.
  bool (*set_ports)(int http, int udp, std::string &error) = nullptr;
  /// The current dashboard port, 0 to 65535.
  int (*http_port)() = nullptr;
  /// The current control port, 0 to 65535.
  int (*udp_port)() = nullptr;
  /// Whether the dashboard opens in the browser at launch.
  bool (*open_browser_pref)() = nullptr;
  /// Stores that preference.
  void (*set_open_browser_pref)(bool open) = nullptr;
  /// Used as `quit` only when `quit` is null.
  void (*quit_fallback)() = nullptr;
};

/// Shows the icon and its menu and runs the application's event loop on the calling thread, which
/// must be the process's main thread. Called at most once in a process. Copies what it needs of
/// `config`. Returns only when the loop is stopped; Quit in the menu calls `quit` and then ends the
/// process.
void run(const GuiConfig &config);

/// Shows a modal critical alert and returns when it is answered. Main thread only.
void alert(const std::string &title, const std::string &text);

} // namespace tdgui
