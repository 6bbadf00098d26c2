/// The desktop's system tray, by the freedesktop.org protocol.
#pragma once

#include "x11/picture_window.h"

namespace td {

/// The tray of the default screen. A tray may end and another one start at any time.
class SystemTray {
public:
  /// From then on root window events say that a tray has started, and events of its window that it
  /// has ended. `connection` must outlive this.
  explicit SystemTray(Connection &connection);

  /// Looks for the tray; returns whether it is another one than the last time, or none now.
  bool look_again();
  /// The window that stands for the tray that was found last, or None.
  xcb_window_t owner() const { return owner_; }
  /// Whether a root window's client message says that a tray has started.
  bool is_announced_by(const xcb_client_message_event_t &message);

  /// The pixels that the tray wants of an icon: with alpha where it draws its background itself.
  PixelKind icon_pixels();
  /// Asks the tray to embed a window as a square of at least `side` pixels. The tray may never
  /// answer.
  void request_dock(xcb_window_t window, int side);

private:
  Connection &connection_;
  std::string selection_;
  xcb_window_t owner_ = XCB_WINDOW_NONE;
};

} // namespace td
