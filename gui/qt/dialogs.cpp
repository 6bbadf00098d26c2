#include "qt/dialogs.h"

#include "qt/application.h"
#include "qt/pictures.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QStyle>
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>

namespace {

constexpr int icon_side = 48, text_width = 380, field_width = 80;

QPointer<QDialog> g_dialog; // the one that is open

void add_text(QLayout &layout, const QString &text, bool bold) {
  auto *label = new QLabel(text);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setFixedWidth(text_width);
  QFont font = label->font();
  font.setBold(bold);
  label->setFont(font);
  layout.addWidget(label);
}

void add_buttons(QDialog &dialog, QLayout &layout, const QStringList &texts) {
  auto *box = new QDialogButtonBox;
  for (const QString &text : texts) {
    const auto role =
        text == texts.first() ? QDialogButtonBox::AcceptRole : QDialogButtonBox::RejectRole;
    // Return presses the default one, which is the first, whatever has the focus.
    box->addButton(text, role)->setAutoDefault(false);
  }
  QObject::connect(box, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(box, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  layout.addWidget(box);
}

/// The first button is the default one, a second one cancels; `form` may be null. No control has
/// the focus until Tab or a click gives it one: a key pressed by accident changes no field.
QDialog *make_dialog(const QIcon &icon, const QString &title, const QString &text,
                     const QStringList &buttons, QLayout *form = nullptr) {
  auto *dialog = new QDialog;
  dialog->setWindowTitle("Tandrel");
  dialog->setAccessibleName(title);
  dialog->setAccessibleDescription(text);
  auto *columns = new QHBoxLayout(dialog);
  columns->setSizeConstraint(QLayout::SetFixedSize);
  auto *picture = new QLabel;
  picture->setPixmap(icon.pixmap(QSize(icon_side, icon_side), dialog->devicePixelRatio()));
  columns->addWidget(picture, 0, Qt::AlignTop);
  auto *column = new QVBoxLayout;
  columns->addLayout(column);
  add_text(*column, title, true);
  add_text(*column, text, false);
  if (form != nullptr) {
    column->addLayout(form);
  }
  add_buttons(*dialog, *column, buttons);
  dialog->setFocusPolicy(Qt::ClickFocus);
  dialog->setFocus();
  return dialog;
}

/// Shows it and deletes it once it is answered.
void open(QDialog *dialog) {
  g_dialog = dialog;
  QObject::connect(dialog, &QDialog::finished, dialog, &QObject::deleteLater);
  dialog->show();
  td::raise_dialog();
}

QLineEdit *add_port_field(QFormLayout &form, const char *label, int port) {
  auto *field = new QLineEdit(QString::number(port));
  field->setFixedWidth(field_width);
  form.addRow(label, field);
  return field;
}

/// The whole number that the field begins with, after optional spaces and a sign; 0 without one.
/// Beyond the range of the type it is the nearest limit.
int value_of(const QLineEdit &field) {
  const long long number = std::strtoll(field.text().toUtf8().constData(), nullptr, 10);
  return static_cast<int>(std::clamp<long long>(number, INT_MIN, INT_MAX));
}

} // namespace

namespace td {

void open_settings(const tdgui::GuiConfig &config) {
  if (raise_dialog()) {
    return;
  }
  const int http = config.http_port ? config.http_port() : 4466;
  const int udp = config.udp_port ? config.udp_port() : 4465;
  auto *form = new QFormLayout;
  const QLineEdit *http_field = add_port_field(*form, "Dashboard port", http);
  const QLineEdit *udp_field = add_port_field(*form, "Control port", udp);
  const char *text = "Changing a port restarts the hub and reconnects the sender and receiver. "
                     "Routing is kept.";
  QDialog *dialog = make_dialog(tile_icon(), "Tandrel Settings", text, {"Apply", "Cancel"}, form);
  QObject::connect(dialog, &QDialog::accepted, dialog, [=, &config] {
    const int new_http = value_of(*http_field), new_udp = value_of(*udp_field);
    const bool is_changed = new_http != http || new_udp != udp;
    std::string error;
    if (is_changed && config.set_ports && !config.set_ports(new_http, new_udp, error)) {
      const QIcon icon = QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning);
      open(make_dialog(icon, "Could not change the ports", QString::fromStdString(error), {"OK"}));
    }
  });
  open(dialog);
}

bool raise_dialog() {
  if (!g_dialog || !g_dialog->isVisible()) {
    return false;
  }
  g_dialog->setWindowState(Qt::WindowNoState); // unlike showNormal() it moves nothing in Qt 6.8
  g_dialog->raise();
  g_dialog->activateWindow();
  return true;
}

void close_dialog() {
  if (g_dialog) {
    g_dialog->reject();
  }
}

} // namespace td

namespace tdgui {

void alert(const std::string &title, const std::string &text) {
  td::make_application();
  const QIcon icon = QApplication::style()->standardIcon(QStyle::SP_MessageBoxCritical);
  const std::unique_ptr<QDialog> dialog(
      make_dialog(icon, QString::fromStdString(title), QString::fromStdString(text), {"OK"}));
  dialog->exec();
}

} // namespace tdgui
