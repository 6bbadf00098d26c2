#include "x_server.h"

#include "interface.h"

#include <QGuiApplication>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace gui_test {
namespace {

struct Free {
  void operator()(void *memory) const { std::free(memory); }
};
template <typename Reply> using Owned = std::unique_ptr<Reply, Free>;

/// Returns when the server has handled what that connection has sent.
void synchronise(xcb_connection_t *connection) {
  Owned<void>(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

} // namespace

bool XServer::is_there() {
  const char *platform = std::getenv("QT_QPA_PLATFORM");
  return platform && std::strcmp(platform, "xcb") == 0;
}

XServer::XServer()
    : connection_(xcb_connect(nullptr, nullptr)),
      root_(xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root) {}

XServer::~XServer() {
  xcb_disconnect(connection_);
}

xcb_window_t XServer::open_window(QRect place) {
  const xcb_window_t window = xcb_generate_id(connection_);
  const std::uint32_t unmanaged = 1;
  xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, std::int16_t(place.x()),
                    std::int16_t(place.y()), std::uint16_t(place.width()),
                    std::uint16_t(place.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &unmanaged);
  xcb_map_window(connection_, window);
  synchronise(connection_);
  return window;
}

xcb_window_t XServer::open_tray() {
  const xcb_window_t tray = open_window(QRect(0, 0, 1, 1));
  const xcb_atom_t selection = atom("_NET_SYSTEM_TRAY_S0");
  xcb_set_selection_owner(connection_, tray, selection, XCB_CURRENT_TIME);
  xcb_client_message_event_t event = {};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = root_;
  event.type = atom("MANAGER");
  event.data.data32[1] = selection;
  event.data.data32[2] = tray;
  xcb_send_event(connection_, 0, root_, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                 reinterpret_cast<const char *>(&event));
  synchronise(connection_);
  return tray;
}

void XServer::close(xcb_window_t window) {
  xcb_destroy_window(connection_, window);
  synchronise(connection_);
}

xcb_atom_t XServer::atom(const std::string &name) {
  const auto cookie =
      xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  return Owned<xcb_intern_atom_reply_t>(xcb_intern_atom_reply(connection_, cookie, nullptr))->atom;
}

void XServer::set(xcb_window_t window, const std::string &name, xcb_atom_t type,
                  std::uint32_t value) {
  xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(name), type, 32, 1, &value);
  synchronise(connection_);
}

void XServer::set_state(xcb_window_t window, const std::string &state) {
  set(window, "_NET_WM_STATE", XCB_ATOM_ATOM, atom(state));
}

void XServer::set_root_property(const std::string &name, xcb_window_t window) {
  set(root_, name, XCB_ATOM_WINDOW, window);
  synchronise(qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection());
  for (int round = 0; round < 3; ++round) { // the event, a timer, and what follows
    handle_events();
  }
}

int XServer::height_of(xcb_window_t window) {
  synchronise(qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection());
  const Owned<xcb_query_tree_reply_t> tree(
      xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root_), nullptr));
  const xcb_window_t *first = xcb_query_tree_children(tree.get()),
                     *end = first + xcb_query_tree_children_length(tree.get());
  EXPECT_NE(std::find(first, end, window), end);
  return static_cast<int>(std::find(first, end, window) - first);
}

void lose_x_server() {
  int broken = 0;
  for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    const int descriptor = std::stoi(entry.path().filename());
    sockaddr_un peer = {};
    socklen_t length = sizeof peer;
    if (getpeername(descriptor, reinterpret_cast<sockaddr *>(&peer), &length) == 0 &&
        peer.sun_family == AF_UNIX && std::strstr(peer.sun_path + 1, ".X11-unix/")) {
      broken += shutdown(descriptor, SHUT_RDWR) == 0;
    }
  }
  EXPECT_GT(broken, 0);
}

} // namespace gui_test
