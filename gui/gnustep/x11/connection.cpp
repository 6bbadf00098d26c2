#include "x11/connection.h"

#include <stdexcept>

namespace {

constexpr std::uint32_t longest_property = 1 << 16; // in units of 4 bytes

} // namespace

namespace td {

Connection::Connection() : connection_(xcb_connect(nullptr, &screen_number_)) {
  if (is_lost()) {
    xcb_disconnect(connection_);
    throw std::runtime_error("the display cannot be opened");
  }
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_));
  for (int skipped = 0; skipped < screen_number_; ++skipped) {
    xcb_screen_next(&screens);
  }
  screen_ = screens.data;
}

Connection::~Connection() {
  xcb_disconnect(connection_);
}

Received<xcb_generic_event_t> Connection::next_event() {
  return Received<xcb_generic_event_t>(xcb_poll_for_event(connection_));
}

xcb_atom_t Connection::atom(const std::string &name) {
  auto known = atoms_.find(name);
  if (known == atoms_.end()) {
    const auto asked =
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const Received<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection_, asked, nullptr));
    known = atoms_.emplace(name, reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE}).first;
  }
  return known->second;
}

xcb_window_t Connection::selection_owner(const std::string &selection) {
  const auto asked = xcb_get_selection_owner(connection_, atom(selection));
  const Received<xcb_get_selection_owner_reply_t> reply(
      xcb_get_selection_owner_reply(connection_, asked, nullptr));
  return reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
}

Received<xcb_get_property_reply_t> Connection::get_property(xcb_window_t window,
                                                            const std::string &property) {
  const auto asked = xcb_get_property(connection_, 0, window, atom(property),
                                      XCB_GET_PROPERTY_TYPE_ANY, 0, longest_property);
  return Received<xcb_get_property_reply_t>(xcb_get_property_reply(connection_, asked, nullptr));
}

std::vector<std::uint32_t> Connection::numbers(xcb_window_t window, const std::string &property) {
  const auto reply = get_property(window, property);
  if (!reply || reply->format != 32) {
    return {};
  }
  const auto *first = static_cast<const std::uint32_t *>(xcb_get_property_value(reply.get()));
  return {first, first + reply->value_len};
}

std::string Connection::text(xcb_window_t window, const std::string &property) {
  const auto reply = get_property(window, property);
  if (!reply || reply->format != 8) {
    return {};
  }
  const auto *first = static_cast<const char *>(xcb_get_property_value(reply.get()));
  return {first, first + reply->value_len};
}

ScreenRect Connection::place_of(xcb_window_t window) {
  const auto asked_size = xcb_get_geometry(connection_, window);
  const auto asked_place = xcb_translate_coordinates(connection_, window, root(), 0, 0);
  const Received<xcb_get_geometry_reply_t> size(
      xcb_get_geometry_reply(connection_, asked_size, nullptr));
  const Received<xcb_translate_coordinates_reply_t> place(
      xcb_translate_coordinates_reply(connection_, asked_place, nullptr));
  if (!size || !place) {
    return {};
  }
  return {place->dst_x, place->dst_y, size->width, size->height};
}

void Connection::watch(xcb_window_t window, std::uint32_t events) {
  xcb_change_window_attributes(connection_, window, XCB_CW_EVENT_MASK, &events);
}

} // namespace td
