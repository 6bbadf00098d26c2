#include "qt/application.h"

#include "qt/pictures.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <unistd.h>

namespace {

std::atomic<bool> g_is_made{false};  // the application
bool g_is_trial = false;             // see make_application
std::atomic<bool> g_is_fatal{false}; // the toolkit has given up
std::string g_reason;                // why the display does not work: the first message about it

std::atomic<void (*)()> g_quit{nullptr};
std::atomic<pid_t> g_ending_thread{-1}; // -1: none is to quit; 0: the first that calls exit()

/// Any thread may notice that the display is gone; exit() destroys what the main one uses.
[[noreturn]] void end_process() {
  while (gettid() != getpid()) {
    QMetaObject::invokeMethod(qApp, end_process, Qt::QueuedConnection);
    pause();
  }
  std::exit(EXIT_FAILURE);
}

void handle_message(QtMsgType type, const QMessageLogContext & /*context*/, const QString &text) {
  const bool is_lost = text.startsWith("The Wayland connection ");
  if (g_is_made && (!is_lost || gettid() == getpid())) { // two threads say so
    for (const QString &line : text.split('\n', Qt::SkipEmptyParts)) {
      std::fprintf(stderr, "Tandrel: %s\n", line.toUtf8().constData());
    }
  } else if (g_reason.empty() && type != QtDebugMsg && type != QtInfoMsg &&
             !text.startsWith("Detected locale")) { // for another one Qt takes a variant in UTF-8
    g_reason = text.section('\n', 0, 0).toStdString();
  }
  // A start fails when a display that worked in the trial has gone.
  g_is_fatal = g_is_fatal || (type == QtFatalMsg && g_is_made);
  if (type == QtFatalMsg || is_lost) {
    end_process(); // else Qt would abort() or _exit()
  }
}

void handle_exit(int status, void * /*unused*/) {
  if (!g_is_made && !g_reason.empty()) {
    std::fprintf(stderr, "Tandrel: the menu-bar interface is not available: %s\n",
                 g_reason.c_str());
    g_reason.clear();
  }
  if (g_is_trial) {
    _exit(EXIT_FAILURE);
  }
  pid_t first = 0;
  if (!g_ending_thread.compare_exchange_strong(first, gettid())) {
    while (first > 0 && first != gettid()) { // the status and what is left are the first one's
      pause();
    }
    return;
  }
  if (status == EXIT_FAILURE && !g_is_fatal) {
    std::fputs("Tandrel: the display is gone: quitting.\n", stderr);
    status = EXIT_SUCCESS;
  }
  if (void (*const quit)() = g_quit) {
    quit();
    if (gettid() != getpid()) {
      _exit(status); // the main thread still uses what the handlers that are left destroy
    }
  }
  std::exit(status); // goes on with those handlers
}

/// Without an address libdbus would start a bus that outlives this process; when the bus is stopped
/// each of Qt's questions would take 25 seconds.
bool has_session_bus() {
  QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
  if (address.isEmpty()) {
    address = "unix:path=" + qEnvironmentVariable("XDG_RUNTIME_DIR") + "/bus";
  }
  if (address.contains("autolaunch:")) {
    return false;
  }
  const QString bus = "org.freedesktop.DBus";
  const QDBusMessage hello =
      QDBusMessage::createMethodCall(bus, "/org/freedesktop/DBus", bus, "Hello");
  const QDBusMessage answer =
      QDBusConnection::connectToPeer(address, "trial").call(hello, QDBus::Block, 1000); // ms
  QDBusConnection::disconnectFromPeer("trial");
  return answer.type() == QDBusMessage::ReplyMessage;
}

/// Keeps the environment: plug-ins remove the token of the start, or set the pointer's theme.
void construct_application() {
  static auto &kept = *new std::vector<char *>; // never destroyed: it stays the environment
  for (char **entry = environ; *entry != nullptr; ++entry) {
    kept.push_back(*entry);
  }
  // Else the bus's library aborts the process when Qt's thread asks a bus that has just gone.
  static char no_abort[] = "DBUS_FATAL_WARNINGS=0";
  kept.push_back(no_abort);
  kept.push_back(nullptr);
  if (g_is_trial || !has_session_bus()) { // a trial needs none
    setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
  }
  if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
    setenv("XDG_RUNTIME_DIR", "/dev/null/none", 1); // else Qt makes a folder and leaves it, below
    setenv("TMPDIR", "/dev/null", 1);               // this one where it cannot make that
  }
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) { // X lets a program place its windows
    setenv("QT_QPA_PLATFORM", qEnvironmentVariableIsEmpty("DISPLAY") ? "wayland" : "xcb;wayland",
           1);
  }
  static char name[] = "tandrel", *arguments[] = {name, nullptr};
  static int count = 1;
  new QApplication(count, arguments); // qApp, until it is deleted
  QDBusConnection::sessionBus();      // now: with its thread and in this environment
  g_is_made = true;
  environ = kept.data();
}

/// Some platform themes have Xlib end the process by _exit() when the display is gone.
void exit_when_display_is_lost() {
  using Handler = int (*)(void *display);
  void *const library = dlopen("libX11.so.6", RTLD_LAZY | RTLD_NOLOAD);
  void *const set_handler = library != nullptr ? dlsym(library, "XSetIOErrorHandler") : nullptr;
  if (set_handler != nullptr) {
    reinterpret_cast<Handler (*)(Handler)>(set_handler)(
        [](void * /*display*/) -> int { end_process(); });
  }
}

} // namespace

namespace td {

void make_application(bool in_trial) {
  if (g_is_made) {
    return;
  }
  g_is_trial = in_trial;
  on_exit(handle_exit, nullptr);
  qInstallMessageHandler(handle_message);
  QCoreApplication::setAttribute(Qt::AA_DisableSessionManager);
  QCoreApplication::setApplicationName("Tandrel");
  QGuiApplication::setDesktopFileName("tandrel");
  sigset_t all, mask;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &mask);
  construct_application();
  pthread_sigmask(SIG_SETMASK, &mask, nullptr);
  g_is_trial = false;
  exit_when_display_is_lost();
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setWindowIcon(tile_icon());
}

void quit_at_exit(void (*quit)()) {
  g_quit = quit;
  pid_t none = -1;
  g_ending_thread.compare_exchange_strong(none, 0);
  on_exit(handle_exit, nullptr);
}

} // namespace td
