#include "tray/system_tray.h"

#include <array>

namespace {

constexpr std::array<std::uint32_t, 2> embed_info = {0, 1}; // version; the tray maps the window
constexpr std::uint32_t request_dock_opcode = 0;

/// WM_NORMAL_HINTS of a square window: trays use a window's minimum or base size.
std::array<std::uint32_t, 18> square_hints(std::uint32_t side) {
  constexpr std::uint32_t has_minimum = 1 << 4, has_base = 1 << 8;
  std::array<std::uint32_t, 18> hints = {};
  hints[0] = has_minimum | has_base;
  hints[5] = hints[6] = side;
  hints[15] = hints[16] = side;
  return hints;
}

} // namespace

namespace td {

SystemTray::SystemTray(Connection &connection)
    : connection_(connection),
      selection_("_NET_SYSTEM_TRAY_S" + std::to_string(connection.screen_number())) {}

bool SystemTray::look_again() {
  const xcb_window_t before = owner_;
  do {
    owner_ = connection_.selection_owner(selection_);
    if (owner_ != XCB_WINDOW_NONE) {
      connection_.watch(owner_, XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    }
    // The tray may have ended before its window was watched.
  } while (owner_ != connection_.selection_owner(selection_) && !connection_.is_lost());
  return owner_ != before;
}

bool SystemTray::is_announced_by(const xcb_client_message_event_t &message) {
  return message.type == connection_.atom("MANAGER") && message.format == 32 &&
         message.data.data32[1] == connection_.atom(selection_);
}

PixelKind SystemTray::icon_pixels() {
  const auto visual = connection_.numbers(owner_, "_NET_SYSTEM_TRAY_VISUAL");
  return visual.empty() ? screen_pixels(connection_) : pixels_of_visual(connection_, visual[0]);
}

// A window is an integer to xcb. NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
void SystemTray::request_dock(xcb_window_t window, int side) {
  const xcb_atom_t info = connection_.atom("_XEMBED_INFO");
  xcb_change_property(connection_.raw(), XCB_PROP_MODE_REPLACE, window, info, info, 32,
                      embed_info.size(), embed_info.data());
  const auto hints = square_hints(static_cast<std::uint32_t>(side));
  xcb_change_property(connection_.raw(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS,
                      XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
  xcb_client_message_event_t request = {};
  request.response_type = XCB_CLIENT_MESSAGE;
  request.format = 32;
  request.window = owner_;
  request.type = connection_.atom("_NET_SYSTEM_TRAY_OPCODE");
  request.data.data32[0] = XCB_CURRENT_TIME;
  request.data.data32[1] = request_dock_opcode;
  request.data.data32[2] = window;
  xcb_send_event(connection_.raw(), 0, owner_, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char *>(&request));
}

} // namespace td
