// Loaded into the launcher by LD_PRELOAD; changes what its environment says:
//   TD_ADDRESS=A          each network interface has this IPv4 address
//   TD_LACKING=SELECTOR   no class has a method of that name
//   TD_DISPLAYS=N         from the N+1st time on, the display cannot be opened
//   TD_PAUSE=FUNCTION     the first call of XOpenDisplay (once it has opened the display) or of
//                         xcb_get_selection_owner stops the process until SIGCONT
//   TD_GATE=FUNCTION, TD_GATE_CALL=N, TD_GATE_FIFO=F
//                         the Nth call of XGrabKeyboard (before it grabs) or of XSetSelectionOwner
//                         (once the X server has it) waits until F's writer has closed it; also in
//                         a program that the launcher starts
//   TD_TERMINATE=1        SIGUSR2 sends terminate: to the application, when its event loop waits

#define _GNU_SOURCE
#include <arpa/inet.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <poll.h>
#include <signal.h>
#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

typedef void *(*Find)(void *cls, void *selector);
typedef const char *(*Name)(void *selector);
typedef int (*Interfaces)(struct ifaddrs **list);
typedef void *(*Open)(const char *name);
typedef int (*Grab)(void *display, unsigned long window, int owner_events, int pointer_mode,
                    int keyboard_mode, unsigned long time);
typedef int (*Own)(void *display, unsigned long selection, unsigned long window,
                   unsigned long time);
typedef int (*Flush)(void *display);
typedef struct {
  unsigned int sequence;
} Cookie;
typedef Cookie (*Owner)(void *connection, unsigned int selection);
typedef void *(*Register)(const char *name);
typedef void (*Send)(void *receiver, void *selector, void *argument);
typedef Send (*Lookup)(void *receiver, void *selector);

// The module is not in the launcher's global scope, and so are its libraries.
static void *function(const char *library, const char *name) {
  return dlsym(dlopen(library, RTLD_NOW | RTLD_NOLOAD), name);
}

void *class_getInstanceMethod(void *cls, void *selector) {
  const char *lacking = getenv("TD_LACKING");
  const Name name = (Name)function("libobjc.so.4", "sel_getName");
  if (lacking && selector && strcmp(name(selector), lacking) == 0) {
    return NULL;
  }
  return ((Find)function("libobjc.so.4", "class_getInstanceMethod"))(cls, selector);
}

static void pause_in(const char *name) {
  static int paused;
  const char *wanted = getenv("TD_PAUSE");
  if (wanted && strcmp(wanted, name) == 0 && !paused++) {
    raise(SIGSTOP);
  }
}

void *XOpenDisplay(const char *name) {
  static int opened;
  const char *displays = getenv("TD_DISPLAYS");
  if (displays && opened++ >= atoi(displays)) {
    return NULL;
  }
  void *display = ((Open)function("libX11.so.6", "XOpenDisplay"))(name);
  pause_in("XOpenDisplay");
  return display;
}

static void wait_in(const char *name) {
  static int calls;
  const char *wanted = getenv("TD_GATE");
  if (!wanted || strcmp(wanted, name) != 0 || ++calls != atoi(getenv("TD_GATE_CALL"))) {
    return;
  }
  const int reader = open(getenv("TD_GATE_FIFO"), O_RDONLY);
  char end;
  while (read(reader, &end, sizeof end) < 0) {}
  close(reader);
}

int XGrabKeyboard(void *display, unsigned long window, int owner_events, int pointer_mode,
                  int keyboard_mode, unsigned long time) {
  wait_in("XGrabKeyboard");
  const Grab grab = (Grab)function("libX11.so.6", "XGrabKeyboard");
  return grab(display, window, owner_events, pointer_mode, keyboard_mode, time);
}

int XSetSelectionOwner(void *display, unsigned long selection, unsigned long window,
                       unsigned long time) {
  const Own own = (Own)function("libX11.so.6", "XSetSelectionOwner");
  const int result = own(display, selection, window, time);
  ((Flush)function("libX11.so.6", "XFlush"))(display);
  wait_in("XSetSelectionOwner");
  return result;
}

Cookie xcb_get_selection_owner(void *connection, unsigned int selection) {
  pause_in("xcb_get_selection_owner");
  return ((Owner)function("libxcb.so.1", "xcb_get_selection_owner"))(connection, selection);
}

int getifaddrs(struct ifaddrs **list) {
  const char *address = getenv("TD_ADDRESS");
  const int result = ((Interfaces)function("libc.so.6", "getifaddrs"))(list);
  for (struct ifaddrs *entry = *list; address && result == 0 && entry; entry = entry->ifa_next) {
    if (entry->ifa_addr && entry->ifa_addr->sa_family == AF_INET) {
      ((struct sockaddr_in *)entry->ifa_addr)->sin_addr.s_addr = inet_addr(address);
    }
  }
  return result;
}

static void terminate(int number) {
  (void)number;
  void *application = *(void **)function("libgnustep-gui.so.0.29", "NSApp");
  void *selector = ((Register)function("libobjc.so.4", "sel_registerName"))("terminate:");
  const Lookup lookup = (Lookup)function("libobjc.so.4", "objc_msg_lookup");
  lookup(application, selector)(application, selector, NULL);
}

static sigset_t request;

__attribute__((constructor)) static void start(void) {
  if (getenv("TD_TERMINATE")) {
    sigaddset(&request, SIGUSR2);
    sigprocmask(SIG_BLOCK, &request, NULL);
    signal(SIGUSR2, terminate);
  }
}

// The event loop waits for several descriptors, the libraries of the X server for one at a time.
int poll(struct pollfd *descriptors, nfds_t count, int timeout) {
  const struct timespec limit = {timeout / 1000, timeout % 1000 * 1000000L};
  sigset_t mask;
  sigprocmask(SIG_BLOCK, NULL, &mask);
  if (count > 1 && sigismember(&request, SIGUSR2)) {
    sigdelset(&mask, SIGUSR2);
  }
  return ppoll(descriptors, count, timeout < 0 ? NULL : &limit, &mask);
}
