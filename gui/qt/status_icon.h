/// The icon: in the desktop's panel while there is one that takes it, otherwise floating.
#pragma once

#include "qt/floating_icon.h"
#include "qt/panel.h"

#include <QMenu>
#include <QSystemTrayIcon>
#include <functional>
#include <memory>

namespace td {

/// Shows the icon as soon as it is known whether there is a panel. A click opens the menu, or
/// brings the open dialog to the front. Main thread only.
class StatusIcon {
public:
  /// `menu` must outlive this. `open_dashboard` is what a click does where a program may not place
  /// a menu; a right click still opens it there.
  StatusIcon(QMenu &menu, std::function<void()> open_dashboard);

private:
  void show_in(bool panel);
  void make_tray_icon();
  void tray_icon_clicked(QSystemTrayIcon::ActivationReason reason);
  void open_menu(QRect icon);

  QMenu &menu_;
  std::function<void()> open_dashboard_;
  FloatingIcon floating_;
  std::unique_ptr<QSystemTrayIcon> in_tray_; // made when the first panel is seen
  Panel panel_;
};

} // namespace td
