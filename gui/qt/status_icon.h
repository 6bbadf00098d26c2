/// The icon: in the desktop's panel while there is one that takes it, otherwise floating.
#pragma once

#include "qt/desktop.h"

#include <QAbstractButton>
#include <QMenu>
#include <QSystemTrayIcon>
#include <functional>
#include <memory>

namespace td {

/// Shows the icon once the panels are known. At the first one Qt decides for the bus or for X's
/// tray, and from then on only panels of that kind count. A left click opens the menu, or raises
/// the open dialog. This button is the floating icon: a window in front of others at the top right
/// of the work area, or an ordinary one where a program may not place it. Main thread only.
class StatusIcon : public QAbstractButton {
public:
  /// `menu` must outlive this. `open_dashboard` is what a click on the panel's icon does in a
  /// Wayland session, where no place for the menu is known; a right click still opens it there.
  StatusIcon(QMenu &menu, std::function<void()> open_dashboard);

protected:
  void paintEvent(QPaintEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void closeEvent(QCloseEvent *event) override;

private:
  enum class Kind { undecided, bus, tray };

  void follow_panels();
  void make_panel_icon();
  void tray_icon_clicked(QSystemTrayIcon::ActivationReason reason);
  void open_menu(QRect icon);
  void place();

  QMenu &menu_;
  std::function<void()> open_dashboard_;
  Kind kind_ = Kind::undecided; // of panel; decided by Qt at the first one that is seen
  std::unique_ptr<QSystemTrayIcon> panel_icon_;
  QTimer embedding_; // runs while a tray has time to take the icon
  Desktop desktop_;
};

} // namespace td
