/// The icon on the screen: in the desktop's system tray, or floating while there is none.
#pragma once

#include "tray/system_tray.h"

#include <functional>

namespace td {

/// What the icon asks of the status item, and what it tells it.
struct TrayIconDelegate {
  /// The item's image for a square of `side` pixels; not wider or higher than that.
  std::function<Picture(int side)> image;
  /// The primary monitor.
  std::function<ScreenRect()> monitor;
  /// Call dock_timed_out() in so many seconds.
  std::function<void(double seconds)> start_timer;
  /// A mouse button was pressed on the icon, which is at `place` on the screen.
  std::function<void(ScreenRect place)> pressed;
  /// The pointer has entered the icon or left it, or the icon has gone from under it.
  std::function<void(bool inside)> pointed;
  /// The X server has ended, or has closed the icon's connection. Nothing works any more.
  std::function<void()> lost;
};

/// Follows trays that end and start, and the sizes that they give. Main thread only.
class TrayIcon {
public:
  /// Does nothing visible until start(). Throws std::runtime_error without a display.
  explicit TrayIcon(TrayIconDelegate delegate);

  /// Shows the icon: in the tray if there is one.
  void start();
  /// Call when connection().descriptor() is readable. May call any function of the delegate.
  void handle_events();
  /// The tray has not embedded the icon in time: shows the icon outside it.
  void dock_timed_out();
  /// The monitors have changed.
  void monitors_changed();
  /// What other programs call the icon.
  void set_title(const std::string &title);
  /// The item's image has changed.
  void image_changed();
  /// The icon's place on the screen.
  ScreenRect place();

  Connection &connection() { return connection_; }

private:
  /// What has been drawn in which window.
  struct Drawn {
    xcb_window_t window = XCB_WINDOW_NONE;
    int width = 0, height = 0;
  };

  std::unique_ptr<PictureWindow> make_window(PixelKind pixels, PictureWindow::Managed managed,
                                             ScreenRect place);
  int side();

  void look_for_tray();
  void change_tray();
  void dock();
  void leave_tray();
  void float_icon();
  void place_floating();
  void stay_above();

  PictureWindow *window_of(xcb_window_t id);
  void draw(PictureWindow &window, int width, int height);
  void redraw_if_resized(const xcb_configure_notify_event_t &event);

  void handle(const xcb_generic_event_t &event);
  void handle_root_property(xcb_atom_t property);
  void handle_reparenting(const xcb_reparent_notify_event_t &event);
  void handle_destruction(xcb_window_t window);
  void handle_press(const xcb_button_press_event_t &event, bool is_sent);

  TrayIconDelegate delegate_;
  Connection connection_;
  SystemTray tray_;
  std::unique_ptr<PictureWindow> docked_; // in the tray, or waiting for it
  std::unique_ptr<PictureWindow> floating_;
  bool is_embedded_ = false;
  std::string title_;
  Drawn drawn_;
};

} // namespace td
