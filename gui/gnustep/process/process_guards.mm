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

/// Puts the actions found at its construction back in force at its end. The signals stay blocked
/// on this thread meanwhile, so that one that arrives waits for its own handler.
class KeptSignals {
public:
  KeptSignals() {
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

  ~KeptSignals() {
    for (std::size_t i = 0; i < guarded_signals.size(); ++i) {
      sigaction(guarded_signals[i], &actions_[i], nullptr);
    }
    pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
  }

  KeptSignals(const KeptSignals &) = delete;
  KeptSignals &operator=(const KeptSignals &) = delete;

private:
  std::array<struct sigaction, guarded_signals.size()> actions_;
  sigset_t mask_;
};

/// The window server's code loads with the application and has SIGINT and SIGTERM end it.
NSApplication *make_application(id application_class, SEL selector) {
  KeptSignals kept;
  return g_make_application(application_class, selector);
}

/// NSTask's own +initialize installs a SIGCHLD handler that has the run loop wait for any child of
/// the process. Everything GNUstep starts through NSTask (its pasteboard server, for one) goes
/// through launch_detached instead, which needs no handler.
void leave_children_alone(Class /*cls*/, SEL /*selector*/) {}

NSTask *launch_detached(Class /*cls*/, SEL /*selector*/, NSString *path, NSArray *arguments) {
  std::vector<std::string> words = {[path UTF8String]};
  for (NSString *argument in arguments) {
    words.emplace_back([argument UTF8String]);
  }
  td::run_detached("exec \"$@\"", words);
  return nil;
}

/// GNUstep tells other programs of each application's start and end through a server process that
/// it starts, that outlives the application, and without which it fails. Nobody here listens.
void stay_unannounced(id /*center*/, SEL /*selector*/) {}

/// GNUstep opens the program's arguments as files and reads some as preferences.
void forget_arguments() {
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
    forget_arguments();
    replace_class_method("NSTask", @selector(initialize),
                         reinterpret_cast<IMP>(leave_children_alone));
    replace_class_method("NSTask", @selector(launchedTaskWithLaunchPath:arguments:),
                         reinterpret_cast<IMP>(launch_detached));
    replace_method(objc_getClass("NSDistributedNotificationCenter"), @selector(_connect),
                   reinterpret_cast<IMP>(stay_unannounced));
    replace_class_method("NSApplication", @selector(sharedApplication),
                         reinterpret_cast<IMP>(make_application),
                         reinterpret_cast<IMP *>(&g_make_application));
    [[NSUserDefaults standardUserDefaults]
        registerDefaults:[NSDictionary dictionaryWithObject:@"YES" forKey:@"GSSuppressAppIcon"]];
  }
}

} // namespace td
