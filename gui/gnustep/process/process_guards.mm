#include "process/process_guards.h"

#include "process/detached.h"
#include "runtime/replace_method.h"

#include <array>
#include <csignal>

#import <AppKit/AppKit.h>
#include <unistd.h>

namespace {

using MakeApplication = NSApplication *(*)(id, SEL);

constexpr std::array<int, 5> guarded_signals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGCHLD};

MakeApplication g_make_application;

/// Saves the signal actions in its constructor and restores them in its destructor. In between the
/// signals are blocked on this thread, so that one that arrives is handled by its own handler.
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
  }

  ~SignalActionsGuard() {
    for (std::size_t i = 0; i < guarded_signals.size(); ++i) {
      sigaction(guarded_signals[i], &actions_[i], nullptr);
    }
    pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
  }

  SignalActionsGuard(const SignalActionsGuard &) = delete;
  SignalActionsGuard &operator=(const SignalActionsGuard &) = delete;

private:
  std::array<struct sigaction, guarded_signals.size()> actions_;
  sigset_t mask_;
};

/// GNUstep's display code, which is loaded when the application is made, installs handlers for
/// SIGINT and SIGTERM that end the process.
NSApplication *make_application(id application_class, SEL selector) {
  SignalActionsGuard guard;
  return g_make_application(application_class, selector);
}

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

/// GNUstep would open the program's arguments as files and read some as preferences.
void hide_arguments() {
  NSString *program = [[[NSProcessInfo processInfo] arguments] objectAtIndex:0];
  char *words[] = {const_cast<char *>([program fileSystemRepresentation]), nullptr};
  [NSProcessInfo initializeWithArguments:words count:1 environment:environ];
}

void replace_class_method(const char *name, SEL selector, IMP imp, IMP *previous = nullptr) {
  IMP old = td::replace_method(object_getClass(objc_getClass(name)), selector, imp);
  if (previous) {
    *previous = old;
  }
}

} // namespace

namespace td {

void prepare_process() {
  @autoreleasepool {
    hide_arguments();
    replace_class_method("NSTask", @selector(initialize),
                         reinterpret_cast<IMP>(skip_child_handler));
    replace_class_method("NSTask", @selector(launchedTaskWithLaunchPath:arguments:),
                         reinterpret_cast<IMP>(launch_detached));
    replace_method(objc_getClass("NSDistributedNotificationCenter"), @selector(_connect),
                   reinterpret_cast<IMP>(skip_server_connection));
    replace_class_method("NSApplication", @selector(sharedApplication),
                         reinterpret_cast<IMP>(make_application),
                         reinterpret_cast<IMP *>(&g_make_application));
    [[NSUserDefaults standardUserDefaults]
        registerDefaults:[NSDictionary dictionaryWithObject:@"YES" forKey:@"GSSuppressAppIcon"]];
  }
}

} // namespace td
