#include "qt/application.h"

#include "qt/pictures.h"

#include <QApplication>
#include <QDBusConnection>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace {

QApplication *g_application = nullptr;

bool g_is_trial = false; // see try_application
bool g_is_fatal = false; // the toolkit has given up, and has said why
std::string g_reason;    // why the display does not work: the toolkit's first message about it

// Never destroyed: the first stays the process's environment to the end.
std::vector<char *> &g_kept_environment = *new std::vector<char *>;
std::vector<char *> &g_changed_environment = *new std::vector<char *>;

void (*g_quit)() = nullptr;
bool g_quits_at_exit = false;

/// Blocks all signals on this thread while it exists, and so for good on threads started meanwhile.
class SignalBlock {
public:
  SignalBlock() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &mask_);
  }
  ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &mask_, nullptr); }
  SignalBlock(const SignalBlock &) = delete;
  SignalBlock &operator=(const SignalBlock &) = delete;

private:
  sigset_t mask_;
};

std::vector<char *> environment_entries() {
  std::vector<char *> entries;
  for (char **entry = environ; *entry != nullptr; ++entry) {
    entries.push_back(*entry);
  }
  entries.push_back(nullptr);
  return entries;
}

/// While it exists, the process has a copy of its environment, which plug-ins change: some remove
/// the token of the program's start, others set the theme of the pointer. Afterwards it has another
/// copy: setenv() may have freed the original. Both copies are kept, because another thread may
/// just start a program with one.
class EnvironmentCopy {
public:
  EnvironmentCopy() {
    g_kept_environment = environment_entries();
    g_changed_environment = g_kept_environment;
    environ = g_changed_environment.data();
  }
  ~EnvironmentCopy() { environ = g_kept_environment.data(); }
  EnvironmentCopy(const EnvironmentCopy &) = delete;
  EnvironmentCopy &operator=(const EnvironmentCopy &) = delete;
};

std::string g_runtime_folder; // empty: there is none

void remove_runtime_folder() {
  if (!g_runtime_folder.empty()) {
    std::error_code none;
    std::filesystem::remove_all(g_runtime_folder, none);
    g_runtime_folder.clear();
  }
}

/// Without XDG_RUNTIME_DIR Qt would make a folder in its place and leave it behind, so it gets a
/// temporary one.
void make_runtime_folder() {
  std::error_code none;
  const std::filesystem::path temporary = std::filesystem::temp_directory_path(none);
  std::string folder = temporary / "tandrel-XXXXXX";
  if (!temporary.empty() && mkdtemp(folder.data()) != nullptr) {
    g_runtime_folder = folder;
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
  }
}

bool is_set(const char *variable) {
  const char *value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

/// Without an address the bus's library would start a bus, which outlives this process.
bool has_session_bus() {
  const char *address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  if (address != nullptr && *address != '\0') {
    return std::strncmp(address, "autolaunch:", 11) != 0;
  }
  const char *folder = std::getenv("XDG_RUNTIME_DIR");
  struct stat facts = {};
  return folder != nullptr && stat((folder + std::string("/bus")).c_str(), &facts) == 0 &&
         S_ISSOCK(facts.st_mode);
}

/// Ends the process before the exit handlers that it has inherited from its parent run.
[[noreturn]] void end_trial() {
  remove_runtime_folder();
  std::fprintf(stderr, "Tandrel: the menu-bar interface is not available: %s\n", g_reason.c_str());
  _exit(EXIT_FAILURE);
}

void handle_message(QtMsgType type, const QMessageLogContext & /*context*/, const QString &text) {
  if (text.startsWith("Detected locale")) {
    return; // that is not for UTF-8: Qt takes one that is
  }
  if (g_reason.empty() && type != QtDebugMsg && type != QtInfoMsg) {
    g_reason = text.section('\n', 0, 0).toStdString();
  }
  if (!g_is_trial) {
    for (const QString &line : text.split('\n', Qt::SkipEmptyParts)) {
      std::fprintf(stderr, "Tandrel: %s\n", line.toUtf8().constData());
    }
  }
  if (type == QtFatalMsg) {
    g_is_fatal = true;
    std::exit(EXIT_FAILURE); // else Qt would abort()
  }
}

void handle_exit() {
  if (g_is_trial) {
    end_trial();
  }
  if (!g_quits_at_exit) {
    return;
  }
  g_quits_at_exit = false;
  if (!g_is_fatal) {
    std::fputs("Tandrel: the display is gone: quitting.\n", stderr);
  }
  if (g_quit != nullptr) {
    g_quit();
  }
  std::exit(g_is_fatal ? EXIT_FAILURE : EXIT_SUCCESS); // goes on with the handlers that are left
}

/// X first, which lets a program place its windows; the user may have chosen another platform.
void construct_application() {
  static char name[] = "tandrel", option[] = "-platform", platforms[] = "xcb;wayland",
              without_x[] = "wayland";
  static char *arguments[] = {name, option, is_set("DISPLAY") ? platforms : without_x, nullptr};
  static int count = is_set("QT_QPA_PLATFORM") ? 1 : 3;
  g_application = new QApplication(count, arguments);
}

} // namespace

namespace td {

void make_application() {
  if (g_application != nullptr) {
    return;
  }
  qInstallMessageHandler(handle_message);
  QCoreApplication::setAttribute(Qt::AA_DisableSessionManager);
  QCoreApplication::setApplicationName("Tandrel");
  QGuiApplication::setDesktopFileName("tandrel");
  const SignalBlock block;
  const EnvironmentCopy copy;
  if (!has_session_bus()) {
    setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
  }
  if (!is_set("XDG_RUNTIME_DIR")) {
    make_runtime_folder();
  }
  construct_application();
  remove_runtime_folder();
  QDBusConnection::sessionBus(); // now: with its thread and with this address
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setWindowIcon(tile_icon());
}

void try_application() {
  g_is_trial = true;
  std::atexit(handle_exit);
  make_application();
  g_is_trial = false;
}

void quit_at_exit(void (*quit)()) {
  g_quit = quit;
  g_quits_at_exit = true;
  std::atexit(handle_exit);
}

void forget_quit_at_exit() {
  g_quits_at_exit = false;
}

} // namespace td
