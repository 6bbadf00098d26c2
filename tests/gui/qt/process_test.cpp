// The application must not interfere with the process's signals, threads, environment and children,
// nor must the way in which it ends.

#include "interface.h"
#include "programs.h"
#include "qt/application.h"
#include "x_server.h"

#include <QApplication>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" bool tdgui_available() noexcept;
extern "C" void tdgui_run(const tdgui::GuiConfig *config) noexcept;

using namespace gui_test;

namespace {

const testing::ExitedWithCode success(EXIT_SUCCESS);

volatile std::sig_atomic_t g_last_signal;
void note_signal(int number) {
  g_last_signal = number;
}

constexpr int handled_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

/// What the process has before any test makes the application.
class Before : public testing::Environment {
public:
  void SetUp() override {
    for (const int number : handled_signals) {
      std::signal(number, note_signal);
    }
    std::signal(SIGPIPE, SIG_IGN);
  }
};

[[maybe_unused]] testing::Environment *const g_before =
    testing::AddGlobalTestEnvironment(new Before);

void (*current_handler(int number))(int) {
  struct sigaction action = {};
  sigaction(number, nullptr, &action);
  return action.sa_handler;
}

std::vector<std::string> environment() {
  std::vector<std::string> entries;
  for (char **entry = environ; *entry; ++entry) {
    entries.emplace_back(*entry);
  }
  return entries;
}

/// The value of a field of /proc/self/task/THREAD/status that is a signal set.
unsigned long long signals_of(const std::filesystem::path &thread, const std::string &field) {
  std::ifstream file(thread / "status");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind(field + ":", 0) == 0) {
      return std::stoull(line.substr(field.size() + 1), nullptr, 16);
    }
  }
  ADD_FAILURE() << "no " << field;
  return 0;
}

/// Whether a child has ended; it stays to be reaped.
bool is_zombie(pid_t child) {
  siginfo_t info = {};
  return waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
         info.si_pid == child;
}

/// Everything that the interface has is used once.
void use(const Interface &interface) {
  calls_of(interface, "Copy Dashboard Address");
  calls_of(interface, "Settings…");
  click(*dialog(), "Cancel");
  open_menu(interface);
  handle_events();
  interface.menu->hide();
}

void set_display(const char *platform, const char *display) {
  unsetenv("WAYLAND_DISPLAY");
  for (const auto &[name, value] : {std::pair("QT_QPA_PLATFORM", platform), {"DISPLAY", display}}) {
    value ? setenv(name, value, 1) : unsetenv(name);
  }
}

/// Runs the interface until `end` ends the process.
void quit_when(const std::function<void(Interface)> &end) {
  allow_exit();
  tdgui::GuiConfig config = recorded_config();
  config.quit = [] { report("quit"); };
  run_interface(config, end);
}

/// Asks whether the interface can be shown, as the launcher does: in a process of its own. Its exit
/// handlers must not run. Exits with 0 for yes and 2 for no.
[[noreturn]] void ask(const char *platform, const char *display) {
  std::atexit([] { report("exit handler"); });
  setenv("LC_ALL", "C", 1); // the toolkit warns of it
  set_display(platform, display);
  _exit(tdgui_available() ? 0 : 2);
}

} // namespace

TEST(Process, KeepsItsSignalHandlers) {
  run_interface(recorded_config(), [](const Interface &interface) {
    use(interface);
    for (const int number : handled_signals) {
      ASSERT_EQ(current_handler(number), note_signal) << number;
      g_last_signal = 0;
      raise(number);
      EXPECT_EQ(g_last_signal, number);
    }
    EXPECT_EQ(current_handler(SIGCHLD), SIG_DFL);
    EXPECT_EQ(current_handler(SIGPIPE), SIG_IGN);
  });
}

TEST(Process, HandlesNoSignalOnAnotherThread) {
  run_interface(recorded_config(), [](const Interface &interface) {
    use(interface);
    unsigned long long handled = 0;
    for (const int number : handled_signals) {
      handled |= 1ULL << (number - 1);
    }
    const std::string main_thread = std::to_string(getpid());
    int others = 0;
    for (const auto &thread : std::filesystem::directory_iterator("/proc/self/task")) {
      const bool is_main = thread.path().filename() == main_thread;
      EXPECT_EQ(signals_of(thread, "SigBlk") & handled, is_main ? 0 : handled) << thread;
      others += !is_main;
    }
    EXPECT_GT(others, 0); // that of the bus
  });
}

TEST(Process, KeepsItsSignalMaskAndItsEnvironmentButForFatalWarnings) {
  const auto start = [] {
    setenv("DESKTOP_STARTUP_ID", "token", 1);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    std::vector<std::string> expected = environment();
    expected.emplace_back("DBUS_FATAL_WARNINGS=0");
    td::make_application();
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    _exit(environment() == expected && !sigismember(&mask, SIGTERM) ? 0 : 1);
  };
  EXPECT_EXIT(start(), success, "");
}

TEST(Process, StartsNoBusAndLeavesNoFile) {
  const auto start = [] {
    const Folder folder, temporary;
    folder.add_program("dbus-launch");
    const SearchPath path(folder.path + ":" + getenv("PATH"));
    setenv("TMPDIR", temporary.path.c_str(), 1);
    unsetenv("XDG_RUNTIME_DIR");
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    setenv("DISPLAY", ":4242", 0); // without one no bus would be started
    run_interface(recorded_config(), [](const Interface &interface) { use(interface); });
    return contents(folder.path + "/opened").empty() && std::filesystem::is_empty(temporary.path);
  };
  EXPECT_EXIT(_exit(start() ? 0 : 1), success, "");
}

TEST(Process, KeepsItsChildren) {
  run_interface(recorded_config(), [](const Interface &interface) {
    use(interface);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1); // has none of its own
    EXPECT_EQ(errno, ECHILD);
    const pid_t child = fork();
    if (child == 0) {
      _exit(7);
    }
    EXPECT_TRUE(run_loop_until([&] { return is_zombie(child); }));
    handle_events();
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, WNOHANG), child);
    EXPECT_EQ(WEXITSTATUS(status), 7);
  });
}

TEST(Process, ThatIsEndedByTheToolkitQuitsFirst) {
  tdgui::GuiConfig config = recorded_config();
  config.quit = [] { report("quit"); };
  const auto end = [&] {
    allow_exit();
    std::atexit([] { report("exit handler"); });
    run_interface(config, [](const Interface &) { std::exit(EXIT_FAILURE); });
  };
  EXPECT_EXIT(end(), success, "Tandrel: the display is gone: quitting.\n1 quit\n2 exit handler\n$");
}

TEST(Process, ThatIsEndedByAnotherThreadQuitsFirst) {
  const auto end = [](const Interface &) {
    std::thread([] { std::exit(EXIT_FAILURE); }).detach();
    run_loop_until([] { return false; });
  };
  EXPECT_EXIT(quit_when(end), success, "Tandrel: the display is gone: quitting.\n1 quit\n$");
}

TEST(Process, QuitsBeforeTheExitHandlersOfPlugIns) {
  const auto end = [] {
    td::make_application();
    std::atexit([] { report("plug-in"); });
    quit_when([](const Interface &) { std::exit(EXIT_FAILURE); });
  };
  EXPECT_EXIT(end(), success, "1 quit\n2 plug-in\n$");
}

/// The toolkit says so and would end the process without its exit handlers.
TEST(Process, QuitsWhenAWaylandCompositorIsGone) {
  const auto end = [](const Interface &) {
    qWarning("The Wayland connection broke. Did the Wayland compositor die?");
    _exit(EXIT_FAILURE);
  };
  EXPECT_EXIT(quit_when(end), success, "Tandrel: the display is gone: quitting.\n1 quit\n$");
}

/// With and without a theme that has its own connection to the server and its own way to end.
TEST(Process, QuitsWhenTheXServerIsGoneInEveryState) {
  if (!XServer::is_there()) {
    GTEST_SKIP();
  }
  const auto nothing = [](const Interface &) {};
  const auto dialog = [](const Interface &interface) { calls_of(interface, "Settings…"); };
  for (const char *theme : {"", "XFCE"}) {
    for (const auto &open : {std::function<void(Interface)>(nothing), {open_menu}, {dialog}}) {
      const auto end = [&](const Interface &interface) {
        open(interface);
        handle_events();
        lose_x_server();
        run_loop_until([] { return false; });
      };
      const auto start = [&] {
        setenv("XDG_CURRENT_DESKTOP", theme, 1);
        on_exit([](int status, void *) { _exit(status); }, nullptr); // whatever themes leave
        quit_when(end);
      };
      EXPECT_EXIT(start(), success, "Tandrel: the display is gone: quitting.\n1 quit\n$") << theme;
    }
  }
}

TEST(Process, ThatLosesTheDisplayAfterQuitSucceeds) {
  const auto quit = [](const Interface &interface) {
    QObject::connect(qApp, &QObject::destroyed, [] { std::exit(EXIT_FAILURE); });
    calls_of(interface, "Quit Tandrel");
  };
  EXPECT_EXIT(quit_when(quit), success, "1 quit\nTandrel: the display is gone: quitting.\n");
}

TEST(Process, ThatIsEndedAfterTheInterfaceDoesNot) {
  const auto end = [] {
    allow_exit();
    tdgui::GuiConfig config = recorded_config();
    config.quit = [] { report("quit"); };
    run_interface(config, [](const Interface &) {});
    report("returned");
    std::exit(3);
  };
  EXPECT_EXIT(end(), testing::ExitedWithCode(3), "(^|\n)1 returned\n$");
}

TEST(Process, ThatIsEndedByAFailureOfTheToolkitQuitsFirstAndFails) {
  const auto end = [] {
    allow_exit();
    tdgui::GuiConfig config = recorded_config();
    config.quit = [] { report("quit"); };
    run_interface(config, [](const Interface &) { qFatal("broken"); });
  };
  EXPECT_EXIT(end(), testing::ExitedWithCode(EXIT_FAILURE), "(^|\n)Tandrel: broken\n1 quit\n$");
}

TEST(Process, BeginsItsMessagesWithItsName) {
  const auto warn = [] {
    setenv("LC_ALL", "C", 1);
    td::make_application();
    qWarning("first\nsecond\n");
    qInfo("third");
    _exit(0);
  };
  EXPECT_EXIT(warn(), success, "^Tandrel: first\nTandrel: second\nTandrel: third\n$");
}

TEST(Module, SaysWhetherTheDisplayWorks) {
  const testing::ExitedWithCode no(2), failure(EXIT_FAILURE);
  const std::string reason = "Tandrel: the menu-bar interface is not available: [^\n]*";
  EXPECT_EXIT(ask("offscreen", nullptr), success, "^$");
  EXPECT_EXIT(ask(nullptr, nullptr), no, "^$");
  EXPECT_EXIT(ask("", ""), no, "^$");
  EXPECT_EXIT(ask("nosuch", nullptr), failure, "^" + reason + "\"nosuch\"[^\n]*\n$");
  EXPECT_EXIT(ask(nullptr, ":4242"), failure, "^" + reason + ":4242[^\n]*\n$");
}

/// The display worked when the module was asked.
TEST(Module, QuitsWhenTheDisplayHasGoneBeforeTheApplicationIsMade) {
  const std::string quits = "Tandrel: the display is gone: quitting.\n1 quit\n$";
  const std::string reason = "^Tandrel: the menu-bar interface is not available: [^\n]*\n";
  tdgui::GuiConfig config = recorded_config();
  config.quit = [] { report("quit"); };
  const auto run = [&](const char *platform, const char *display) {
    allow_exit();
    set_display(platform, display);
    tdgui_run(&config);
  };
  const auto alert = [] {
    allow_exit();
    set_display("nosuch", nullptr);
    tdgui::alert("title", "text");
  };
  EXPECT_EXIT(run("nosuch", nullptr), success, reason + quits);
  EXPECT_EXIT(run(nullptr, ":4242"), success, reason + quits);
  EXPECT_EXIT(alert(), testing::ExitedWithCode(EXIT_FAILURE), reason + "$");
}

TEST(Module, RunsTheInterfaceAfterAskingInTheSameProcess) {
  tdgui::GuiConfig config = recorded_config();
  config.quit = [] { report("quit"); };
  const auto run = [&] {
    allow_exit();
    tdgui_available() || (std::abort(), true);
    run_interface(config, [](const Interface &interface) { calls_of(interface, "Quit Tandrel"); });
  };
  EXPECT_EXIT(run(), success, "(^|\n)1 quit\n$");
}
