#include "process/display_guard.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

#include <X11/Xlib.h>
#include <xcb/xcb.h>

namespace {

constexpr std::chrono::seconds answer_timeout(10);

void (*g_quit)() = nullptr;

/// By XCB, since a loss of the connection meanwhile would have Xlib end the process.
bool can_connect() {
  xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
  const bool connected = xcb_connection_has_error(connection) == 0;
  xcb_disconnect(connection);
  return connected;
}

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

/// Xlib's handler of a lost connection. It must not return: Xlib would then call exit(1), unless
/// each connection had an exit handler of its own, which one that is being opened cannot have yet.
int handle_lost_connection(Display * /*display*/) {
  td::quit_without_display();
}

} // namespace

namespace td {

bool display_answers() {
  // A connection cannot be given up while it is being made, so a thread that gets no answer is left
  // waiting for it.
  auto answer = std::make_shared<std::promise<bool>>();
  std::future<bool> answered = answer->get_future();
  {
    SignalBlock block;
    std::thread([answer] { answer->set_value(can_connect()); }).detach();
  }
  if (answered.wait_for(answer_timeout) != std::future_status::ready) {
    throw std::runtime_error("the display does not answer");
  }
  return answered.get();
}

void quit_when_display_is_lost(void (*quit)()) {
  g_quit = quit;
  XSetIOErrorHandler(handle_lost_connection);
}

void quit_without_display() {
  std::fputs("Tandrel: the display is gone: quitting.\n", stderr);
  if (g_quit != nullptr) {
    g_quit();
  }
  std::exit(EXIT_SUCCESS);
}

} // namespace td
