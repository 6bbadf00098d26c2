/// The icon where no panel takes it: a small window in front of others, at the top right of the
/// primary monitor beside the desktop's bars.
#pragma once

#include <QWidget>
#include <functional>

namespace td {

class FloatingIcon : public QWidget {
public:
  /// `pressed` gets the icon's place on the screen.
  explicit FloatingIcon(std::function<void(QRect place)> pressed);

protected:
  void paintEvent(QPaintEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void resizeEvent(QResizeEvent *event) override;
  void showEvent(QShowEvent *event) override;

private:
  void watch_screen();
  void place();

  std::function<void(QRect place)> pressed_;
  QMetaObject::Connection work_area_;
};

} // namespace td
