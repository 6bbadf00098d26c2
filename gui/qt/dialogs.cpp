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

struct Ports {
  int http;
  int udp;
};

struct Contents {
  QIcon icon;
  QString title, text;
  QStringList buttons; ///< the first is the default one, the second, if there is one, cancels
};

QPointer<QDialog> g_dialog; // the one that is open

QLabel *add_text(QLayout &layout, const QString &text) {
  auto *label = new QLabel(text);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setFixedWidth(text_width);
  layout.addWidget(label);
  return label;
}

void add_buttons(QDialog &dialog, QLayout &layout, const QStringList &texts) {
  auto *box = new QDialogButtonBox;
  for (const QString &text : texts) {
    const bool accepts = text == texts.first();
    QPushButton *button =
        box->addButton(text, accepts ? QDialogButtonBox::AcceptRole : QDialogButtonBox::RejectRole);
    button->setAutoDefault(false); // Return presses the default one, whatever has the focus
    button->setDefault(accepts);
  }
  QObject::connect(box, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(box, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  layout.addWidget(box);
}

/// Not shown yet; `form` may be null. No control has the focus until Tab or a click gives it one,
/// so that a key pressed by accident does not change a field.
QDialog *make_dialog(const Contents &contents, QLayout *form) {
  auto *dialog = new QDialog;
  dialog->setWindowTitle("Tandrel");
  dialog->setAccessibleName(contents.title);
  dialog->setAccessibleDescription(contents.text);
  auto *columns = new QHBoxLayout(dialog);
  columns->setSizeConstraint(QLayout::SetFixedSize);
  auto *picture = new QLabel;
  picture->setPixmap(contents.icon.pixmap(QSize(icon_side, icon_side), dialog->devicePixelRatio()));
  columns->addWidget(picture, 0, Qt::AlignTop);
  auto *column = new QVBoxLayout;
  columns->addLayout(column);
  QLabel *title = add_text(*column, contents.title);
  QFont font = title->font();
  font.setBold(true);
  title->setFont(font);
  add_text(*column, contents.text);
  if (form != nullptr) {
    column->addLayout(form);
  }
  add_buttons(*dialog, *column, contents.buttons);
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

int value_of(const QLineEdit &field) {
  return td::leading_number(field.text().toUtf8().constData());
}

Ports current_ports(const tdgui::GuiConfig &config) {
  return {config.http_port ? config.http_port() : 4466, config.udp_port ? config.udp_port() : 4465};
}

void warn_ports_refused(const std::string &error) {
  const QIcon icon = QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning);
  open(make_dialog({icon, "Could not change the ports", QString::fromStdString(error), {"OK"}},
                   nullptr));
}

void apply_ports(const tdgui::GuiConfig &config, Ports current, Ports wanted) {
  if ((wanted.http == current.http && wanted.udp == current.udp) || !config.set_ports) {
    return;
  }
  std::string error;
  if (!config.set_ports(wanted.http, wanted.udp, error)) {
    warn_ports_refused(error);
  }
}

} // namespace

namespace td {

void open_settings(const tdgui::GuiConfig &config) {
  if (raise_dialog()) {
    return;
  }
  const Ports current = current_ports(config);
  auto *form = new QFormLayout;
  const QLineEdit *http = add_port_field(*form, "Dashboard port", current.http);
  const QLineEdit *udp = add_port_field(*form, "Control port", current.udp);
  QDialog *dialog = make_dialog({tile_icon(),
                                 "Tandrel Settings",
                                 "Changing a port restarts the hub and reconnects the sender and "
                                 "receiver. Routing is kept.",
                                 {"Apply", "Cancel"}},
                                form);
  QObject::connect(dialog, &QDialog::accepted, dialog, [&config, current, http, udp] {
    apply_ports(config, current, {value_of(*http), value_of(*udp)});
  });
  open(dialog);
}

bool raise_dialog() {
  if (!g_dialog || !g_dialog->isVisible()) {
    return false;
  }
  g_dialog->showNormal(); // it may have been minimised
  g_dialog->raise();
  g_dialog->activateWindow();
  return true;
}

void close_dialog() {
  if (g_dialog) {
    g_dialog->reject();
  }
}

int leading_number(const char *text) {
  return static_cast<int>(std::clamp<long long>(std::strtoll(text, nullptr, 10), INT_MIN, INT_MAX));
}

} // namespace td

namespace tdgui {

void alert(const std::string &title, const std::string &text) {
  td::make_application();
  const QIcon icon = QApplication::style()->standardIcon(QStyle::SP_MessageBoxCritical);
  const std::unique_ptr<QDialog> dialog(make_dialog(
      {icon, QString::fromStdString(title), QString::fromStdString(text), {"OK"}}, nullptr));
  dialog->exec();
}

} // namespace tdgui
