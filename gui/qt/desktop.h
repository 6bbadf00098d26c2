/// What the desktop has for the icon: panels that take it, and windows that cover it.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QTimer>
#include <functional>
#include <vector>

#include <xcb/xcb.h>

namespace td {

/// Panels take icons by the bus (StatusNotifierItem) or by X's tray (XEmbed). Main thread only.
class Desktop : public QObject, public QAbstractNativeEventFilter {
public:
  /// Calls from the event loop `panels`, once when it is known which panels there are, for which
  /// the bus has a second, and then when one may have come, gone, or taken the icon; and `covered`
  /// when a window may have come above others, but none fills the screen.
  Desktop(std::function<void()> panels, std::function<void()> covered);

  /// Whether there is a panel on the bus, or a tray on the screen.
  bool has_host() const { return bus_ == Bus::with_host; }
  bool has_tray() const { return tray_ != XCB_NONE; }
  /// Whether the bus does not answer; a call that waits for it then blocks for 25 seconds.
  bool is_bus_silent() const { return bus_ == Bus::silent; }
  /// Whether another window contains this one. There must be an X server.
  bool is_embedded(xcb_window_t window) const;
  bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;

private:
  enum class Bus { unknown, silent, without_host, with_host };

  void ask_bus();
  void watch_screen(xcb_connection_t *connection);
  void find_tray();

  std::function<void()> panels_, covered_;
  Bus bus_ = Bus::unknown;
  bool panel_died_ = false; // that of Plasma or Cinnamon, seen earlier
  QTimer bus_changed_;

  xcb_connection_t *connection_ = nullptr; // Qt's; null where there is no X server
  std::vector<xcb_atom_t> atoms_;
  xcb_window_t tray_ = XCB_NONE;
};

} // namespace td
