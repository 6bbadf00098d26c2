/// Whether the desktop has a panel that takes icons.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QDBusServiceWatcher>
#include <QTimer>
#include <functional>

#include <xcb/xcb.h>

namespace td {

/// Where icons go by the bus (StatusNotifierItem) there is a service that watches the panels;
/// without it by X's tray (XEmbed). Qt decides between the two once in a process, when the first
/// icon for a panel is made: so that must happen when a panel is there, and only panels of that
/// kind count from then on. Main thread only.
class Panel : public QAbstractNativeEventFilter {
public:
  /// Calls `changed` from the event loop: once when it is known whether there is a panel, and then
  /// at each change.
  explicit Panel(std::function<void(bool available)> changed);
  ~Panel() override;
  Panel(const Panel &) = delete;
  Panel &operator=(const Panel &) = delete;

  bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;

private:
  enum class Kind { undecided, bus, tray };

  void watch_bus();
  void ask_bus();
  void bus_answered(bool has_watcher, bool has_host);
  void watch_tray();
  void find_tray();
  void report();

  std::function<void(bool)> changed_;
  Kind kind_ = Kind::undecided;
  bool bus_is_known_ = false, has_watcher_ = false, has_host_ = false;
  bool reported_ = false, available_ = false;
  QDBusServiceWatcher bus_watcher_;
  QTimer bus_changed_, tray_changed_, bus_silent_;

  xcb_connection_t *connection_ = nullptr; // Qt's; null where there is no X server
  xcb_atom_t selection_ = XCB_NONE, manager_ = XCB_NONE;
  xcb_window_t tray_ = XCB_NONE;
};

} // namespace td
