#include "bus.h"

#include <QDBusMessage>
#include <QDBusVariant>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace gui_test {

constexpr const char *service = "org.kde.StatusNotifierWatcher";

Bus::Bus() {
  int ends[2];
  EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
  daemon_ = fork();
  if (daemon_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(ends[1], STDOUT_FILENO);
    // A file would be left when the daemon is killed.
    const std::string listened = "--address=unix:abstract=gui-test-" + std::to_string(getpid());
    execlp("dbus-daemon", "dbus-daemon", "--session", "--nofork", "--nopidfile",
           "--print-address=1", listened.c_str(), nullptr);
    _exit(127);
  }
  close(ends[1]);
  for (char c = 0; read(ends[0], &c, 1) == 1 && c != '\n';) {
    address += c;
  }
  close(ends[0]);
  EXPECT_NE(address, "");
  setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
}

Bus::~Bus() {
  kill(daemon_, SIGKILL);
  waitpid(daemon_, nullptr, 0);
}

void Bus::stop() const {
  kill(daemon_, SIGSTOP);
  siginfo_t info = {};
  EXPECT_EQ(waitid(P_PID, static_cast<id_t>(daemon_), &info, WSTOPPED), 0);
}

Watcher::Watcher(const Bus &bus)
    : connection_(QDBusConnection::connectToBus(QString::fromStdString(bus.address), "watcher")) {
  connection_.registerVirtualObject("/StatusNotifierWatcher", this);
  EXPECT_TRUE(connection_.registerService(service));
}

Watcher::~Watcher() {
  QDBusConnection::disconnectFromBus("watcher");
}

QString Watcher::introspect(const QString & /*path*/) const {
  return {};
}

bool Watcher::handleMessage(const QDBusMessage &message, const QDBusConnection &connection) {
  if (answers) {
    connection.send(message.createReply(QVariant::fromValue(QDBusVariant(false))));
  }
  return true;
}

} // namespace gui_test
