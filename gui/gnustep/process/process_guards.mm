#include "process/process_guards.h"

#include "detached.h"
#include "process/temporary_folder.h"
#include "runtime/replace_method.h"

#include <array>
#include <csignal>
#include <cstring>
#include <stdexcept>

#import <AppKit/AppKit.h>
#include <unistd.h>

namespace {

constexpr std::array<int, 5> guarded_signals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGCHLD};

/// Saves the signal actions in its constructor and restores them in its destructor. In between the
/// signals are blocked on this thread, so that one that arrives is handled by its own handler:
/// GNUstep's display code installs handlers for SIGINT and SIGTERM that end the process.
class SignalActionsGuard {
public:
  SignalActionsGuard() {
    sigset_t guarded;
    sigemptyset(&guarded);
    for (int number : guarded_signals) {
      sigaddset(&guarded, number);
    }
    pthread_sigmask(SIG_BLOCK, &guarded, &mask_);
    for (std::size_t i = 0; i < guarded_signals.size(); ++i) {
      sigaction(guarded_signals[i], nullptr, &actions_[i]);
    }
    sigaction(SIGPIPE, nullptr, &pipe_action_);
  }

  ~SignalActionsGuard() {
    for (std::size_t i = 0; i < guarded_signals.size(); ++i) {
      sigaction(guarded_signals[i], &actions_[i], nullptr);
    }
    if (restores_pipe_) {
      sigaction(SIGPIPE, &pipe_action_, nullptr);
    }
    pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
  }

  SignalActionsGuard(const SignalActionsGuard &) = delete;
  SignalActionsGuard &operator=(const SignalActionsGuard &) = delete;

  /// GNUstep ignores SIGPIPE if it has no handler, and needs that once it is in use.
  void keep_ignoring_pipe() { restores_pipe_ = false; }

private:
  std::array<struct sigaction, guarded_signals.size()> actions_;
  struct sigaction pipe_action_;
  bool restores_pipe_ = true;
  sigset_t mask_;
};

/// Replaces +[NSTask initialize], which installs a SIGCHLD handler that makes the run loop wait for
/// any child of the process. What GNUstep starts through NSTask, such as its pasteboard server, is
/// started by launch_detached instead, which needs no handler.
void skip_child_handler(Class /*cls*/, SEL /*selector*/) {}

NSTask *launch_detached(Class /*cls*/, SEL /*selector*/, NSString *path, NSArray *arguments) {
  std::vector<std::string> words = {[path UTF8String]};
  for (NSString *argument in arguments) {
    words.emplace_back([argument UTF8String]);
  }
  td::run_detached("exec \"$@\"", words);
  return nil;
}

/// Replaces -[NSDistributedNotificationCenter _connect]. GNUstep sends a notification of each
/// application's start and end, for which it starts a server process that outlives the application.
/// No program needs these notifications.
void skip_server_connection(id /*center*/, SEL /*selector*/) {}

/// Replaces -[GSServicesManager registerAsServiceProvider]. The application offers no services, and
/// where its name cannot be registered, GNUstep would ask the user what to do, before the icon
/// shows.
void skip_registration(id /*manager*/, SEL /*selector*/) {}

/// What GNUstep takes for the program's arguments and environment. It would open the arguments as
/// files and read some as preferences; and it would use no other folder for temporary files than
/// the one that the environment names first.
void set_process_info() {
  NSString *program = [[[NSProcessInfo processInfo] arguments] objectAtIndex:0];
  char *words[] = {const_cast<char *>([program fileSystemRepresentation]), nullptr};
  std::string folder = "TEMP=" + td::temporary_folder();
  std::vector<char *> environment = {folder.data()};
  for (char **entry = environ; *entry; ++entry) {
    if (std::strncmp(*entry, "TEMP=", 5) != 0) {
      environment.push_back(*entry);
    }
  }
  environment.push_back(nullptr);
  [NSProcessInfo initializeWithArguments:words count:1 environment:environment.data()];
}

void replace_methods() {
  Class task = object_getClass(objc_getClass("NSTask"));
  td::replace_method(task, @selector(initialize), reinterpret_cast<IMP>(skip_child_handler));
  td::replace_method(task, @selector(launchedTaskWithLaunchPath:arguments:),
                     reinterpret_cast<IMP>(launch_detached));
  td::replace_method(objc_getClass("NSDistributedNotificationCenter"), @selector(_connect),
                     reinterpret_cast<IMP>(skip_server_connection));
  td::replace_method(objc_getClass("GSServicesManager"), @selector(registerAsServiceProvider),
                     reinterpret_cast<IMP>(skip_registration));
}

/// Those of the whole layer: the others have been replaced when the module was loaded.
void check_methods() {
  std::string names;
  for (const std::string &name : td::missing_methods()) {
    names += (names.empty() ? "" : ", ") + name;
  }
  if (!names.empty()) {
    throw std::runtime_error("this GNUstep has no " + names);
  }
}

/// Both Alt keys are the Command key, unless the user has configured others.
///
/// If the user's GSContext names a class that the display code lacks, it ends the process. A value
/// that is no string, in the domain that is looked at first, has it use its own class.
void set_preferences() {
  NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
  [defaults
      registerDefaults:[NSDictionary dictionaryWithObjectsAndKeys:@"YES", @"GSSuppressAppIcon",
                                                                  @"Alt_R", @"GSSecondCommandKey",
                                                                  nil]];
  [defaults removeVolatileDomainForName:NSArgumentDomain];
  [defaults setVolatileDomain:[NSDictionary dictionaryWithObject:[NSArray array]
                                                          forKey:@"GSContext"]
                      forName:NSArgumentDomain];
}

} // namespace

namespace td {

void make_application() {
  SignalActionsGuard guard;
  replace_methods();
  check_methods();
  @autoreleasepool {
    set_process_info();
    set_preferences();
    [NSApplication sharedApplication];
  }
  guard.keep_ignoring_pipe();
}

} // namespace td
