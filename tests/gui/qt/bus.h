/// A private session bus and what is on it in place of a desktop.
#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <string>

#include <sys/types.h>

namespace gui_test {

/// A bus's daemon; the process's session bus from then on. It ends with this or with the process.
class Bus {
public:
  Bus();
  ~Bus();
  void stop() const; ///< no answer until it is continued

  std::string address;

private:
  pid_t daemon_ = 0;
};

/// The service that watches panels, where there is none.
class Watcher : public QDBusVirtualObject {
public:
  explicit Watcher(const Bus &bus);
  ~Watcher() override;

  bool answers = true; ///< false: it leaves every question open

  QString introspect(const QString &path) const override;
  bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
  QDBusConnection connection_;
};

} // namespace gui_test
