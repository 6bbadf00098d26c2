/// Other programs on the X server of the tests: a connection of its own.
#pragma once

#include <QRect>
#include <string>
#include <vector>

#include <xcb/xcb.h>

namespace gui_test {

class XServer {
public:
  /// Whether the tests run on an X server.
  static bool is_there();

  XServer();
  ~XServer();

  /// A window that no window manager places, above all others.
  xcb_window_t open_window(QRect place);
  /// A tray that accepts no icon.
  xcb_window_t open_tray();
  void close(xcb_window_t window);

  void set_state(xcb_window_t window, const std::string &state);
  /// As a window manager does; returns when the interface has handled it.
  void set_root_property(const std::string &name, xcb_window_t window);

  /// The place of the window among the others, from the lowest to the highest.
  int height_of(xcb_window_t window);

private:
  xcb_atom_t atom(const std::string &name);
  void set(xcb_window_t window, const std::string &name, xcb_atom_t type, std::uint32_t value);

  xcb_connection_t *connection_;
  xcb_window_t root_;
};

/// Breaks this process's connections to the X server, as when it ends.
void lose_x_server();

} // namespace gui_test
