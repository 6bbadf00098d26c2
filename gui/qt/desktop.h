/// What the desktop has for the icon: panels that take it, and windows that cover it.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QTimer>
#include <functional>
#include <optional>
#include <vector>

#include <xcb/xcb.h>

namespace td {

/// Icons go by the bus (StatusNotifierItem) or by X's tray (XEmbed). Qt decides when an icon for a
/// panel is made: so that must happen when a panel is there, and only panels of that kind count
/// from then on. Main thread only.
class Desktop : public QObject, public QAbstractNativeEventFilter {
public:
  /// Calls from the event loop `panel`, once when it is known whether there is a panel, for which
  /// the bus has a second, and then at each change; and `covered` when a window may have come above
  /// others, but none fills the screen.
  Desktop(std::function<void(bool available)> panel, std::function<void()> covered);

  /// Whether the first panel that was seen takes icons by the bus.
  bool has_chosen_bus() const { return kind_ == Kind::bus; }
  bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;

private:
  enum class Kind { undecided, bus, tray };
  enum class Bus { unknown, without_watcher, without_host, with_host };

  void ask_bus();
  void watch_screen(xcb_connection_t *connection);
  void find_tray();
  void report();

  std::function<void(bool)> panel_;
  std::function<void()> covered_;
  Kind kind_ = Kind::undecided;
  std::optional<bool> available_; // as reported
  Bus bus_ = Bus::unknown;
  QTimer bus_changed_;

  xcb_connection_t *connection_ = nullptr; // Qt's; null where there is no X server
  std::vector<xcb_atom_t> atoms_;
  xcb_window_t tray_ = XCB_NONE;
};

} // namespace td
