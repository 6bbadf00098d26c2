// Loaded into the launcher by LD_PRELOAD; changes what its environment says:
//   TD_ADDRESS=A      each network interface has this IPv4 address
//   TD_PAUSE=F        the launcher's first call of F, XOpenDisplay, xcb_get_selection_owner or
//                     xcb_map_window, stops its process until SIGCONT
//   TD_GATE=FIFO      the launcher, once the X server has its first xcb_set_selection_owner, waits
//                     until the FIFO's writer has closed it
//   TD_JOIN=FIFO      the launcher's main thread does the same before it ends Qt's thread for
//                     Wayland by a byte 0 in a pipe
//   TD_EXIT=FIFO      a thread of the launcher calls exit(5) once the FIFO's writer has closed it
//   TD_HANDLER=1      the first call of XOpenDisplay registers a handler that ends the process with
//                     status 6 when it exits, as a plug-in may

#define _GNU_SOURCE
#include <arpa/inet.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <pthread.h>
#include <signal.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

typedef struct {
  unsigned int sequence;
} Cookie;

static pid_t launcher; // 0 in other programs; its forks are other processes

static int is_launcher(void) {
  return launcher == getpid();
}

// The module is not in the launcher's global scope, and so are its libraries.
static void *function(const char *library, const char *name) {
  return dlsym(dlopen(library, RTLD_NOW | RTLD_NOLOAD), name);
}

static void pause_in(const char *name) {
  static int paused;
  const char *wanted = getenv("TD_PAUSE");
  if (is_launcher() && wanted && strcmp(wanted, name) == 0 && !paused++) {
    raise(SIGSTOP);
  }
}

static void wait_for_end(const char *fifo) {
  const int reader = open(fifo, O_RDONLY);
  char end;
  while (read(reader, &end, sizeof end) < 0 && errno == EINTR) {}
  close(reader);
}

static void end_process(void) {
  _exit(6);
}

void *XOpenDisplay(const char *name) {
  static int registered;
  pause_in("XOpenDisplay");
  if (is_launcher() && getenv("TD_HANDLER") && !registered++) {
    atexit(end_process);
  }
  return ((void *(*)(const char *))function("libX11.so.6", "XOpenDisplay"))(name);
}

Cookie xcb_get_selection_owner(void *connection, uint32_t selection) {
  pause_in("xcb_get_selection_owner");
  return ((Cookie(*)(void *, uint32_t))function("libxcb.so.1", "xcb_get_selection_owner"))(
      connection, selection);
}

Cookie xcb_map_window(void *connection, uint32_t window) {
  pause_in("xcb_map_window");
  return ((Cookie(*)(void *, uint32_t))function("libxcb.so.1", "xcb_map_window"))(connection,
                                                                                  window);
}

Cookie xcb_set_selection_owner(void *connection, uint32_t owner, uint32_t selection,
                               uint32_t time) {
  static int calls;
  const Cookie cookie = ((Cookie(*)(void *, uint32_t, uint32_t, uint32_t))function(
      "libxcb.so.1", "xcb_set_selection_owner"))(connection, owner, selection, time);
  const char *fifo = getenv("TD_GATE");
  if (is_launcher() && fifo && !calls++) {
    ((int (*)(void *))function("libxcb.so.1", "xcb_flush"))(connection);
    wait_for_end(fifo);
  }
  return cookie;
}

ssize_t write(int descriptor, const void *data, size_t size) {
  static int calls;
  const char *fifo = getenv("TD_JOIN");
  if (fifo && is_launcher() && gettid() == launcher && size == 1 && !*(const char *)data &&
      !calls++) {
    wait_for_end(fifo);
  }
  return syscall(SYS_write, descriptor, data, size);
}

int getifaddrs(struct ifaddrs **list) {
  const char *address = getenv("TD_ADDRESS");
  const int result = ((int (*)(struct ifaddrs **))function("libc.so.6", "getifaddrs"))(list);
  for (struct ifaddrs *entry = *list; address && result == 0 && entry; entry = entry->ifa_next) {
    if (entry->ifa_addr && entry->ifa_addr->sa_family == AF_INET) {
      ((struct sockaddr_in *)entry->ifa_addr)->sin_addr.s_addr = inet_addr(address);
    }
  }
  return result;
}

static void *wait_and_exit(void *fifo) {
  wait_for_end(fifo);
  exit(5);
}

__attribute__((constructor)) static void start(void) {
  char *fifo = getenv("TD_EXIT");
  sigset_t all, mask;
  pthread_t thread;
  if (strcmp(program_invocation_short_name, "launcher") != 0) {
    return;
  }
  launcher = getpid();
  if (fifo) {
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &mask);
    pthread_create(&thread, NULL, wait_and_exit, fifo);
    pthread_sigmask(SIG_SETMASK, &mask, NULL);
  }
}
