#include "tray/tray_icon.h"

#include "tray/floating_place.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int ordinary_side = 22;  // pixels; the usual icon size of trays
constexpr double dock_timeout = 2; // seconds

// The tile that an icon without the tray's background is drawn on: dark, so that the icon can be
// seen on it whatever the colour of the bar.
constexpr std::uint32_t tile_colour = 0xFF212121, clear = 0;
constexpr double tile_rounding = 0.2; // of its side

constexpr std::uint32_t icon_events = XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                      XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_ENTER_WINDOW |
                                      XCB_EVENT_MASK_LEAVE_WINDOW;

template <typename Event> const Event &as(const xcb_generic_event_t &event) {
  return reinterpret_cast<const Event &>(event);
}

} // namespace

namespace td {

TrayIcon::TrayIcon(TrayIconDelegate delegate) : delegate_(std::move(delegate)), tray_(connection_) {
  connection_.watch(connection_.root(),
                    XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
}

void TrayIcon::start() {
  look_for_tray();
  if (!docked_ && !floating_) {
    float_icon();
  }
  handle_events();
}

std::unique_ptr<PictureWindow>
TrayIcon::make_window(PixelKind pixels, PictureWindow::Managed managed, ScreenRect place) {
  auto window = std::make_unique<PictureWindow>(connection_, pixels, place, managed, icon_events);
  window->set_title(title_);
  return window;
}

int TrayIcon::side() {
  return static_cast<int>(std::lround(ordinary_side * pixel_density(connection_)));
}

// --- In the tray or floating --------------------------------------------------------------------

void TrayIcon::look_for_tray() {
  if (tray_.look_again()) {
    change_tray();
  }
}

void TrayIcon::change_tray() {
  leave_tray();
  if (tray_.owner() != XCB_WINDOW_NONE) {
    dock();
  } else if (!floating_) {
    float_icon();
  }
}

void TrayIcon::dock() {
  const auto size = static_cast<unsigned int>(side());
  docked_ = make_window(tray_.icon_pixels(), PictureWindow::Managed::yes, {0, 0, size, size});
  draw(*docked_, side(), side());
  tray_.request_dock(docked_->id(), side());
  delegate_.start_timer(dock_timeout);
}

void TrayIcon::dock_timed_out() {
  // A tray that is only slow can still take the icon: the request stands.
  if (!is_embedded_ && !floating_) {
    float_icon();
  }
  handle_events();
}

/// The window in the tray is of no more use; it may be gone already.
void TrayIcon::leave_tray() {
  docked_.reset();
  is_embedded_ = false;
}

void TrayIcon::float_icon() {
  floating_ = make_window(see_through_pixels(connection_), PictureWindow::Managed::no,
                          floating_place(connection_, delegate_.monitor(), side()));
  draw(*floating_, side(), side());
  floating_->show();
}

void TrayIcon::place_floating() {
  if (floating_) {
    floating_->place(floating_place(connection_, delegate_.monitor(), side()));
  }
}

/// Window managers do not keep a window above others that they do not manage.
void TrayIcon::stay_above() {
  if (floating_ && !is_full_screen_in_use(connection_)) {
    floating_->raise();
  }
}

void TrayIcon::monitors_changed() {
  place_floating();
  handle_events();
}

ScreenRect TrayIcon::place() {
  const auto &window = floating_ ? floating_ : docked_;
  return window ? connection_.place_of(window->id()) : ScreenRect{};
}

// --- Drawing ------------------------------------------------------------------------------------

PictureWindow *TrayIcon::window_of(xcb_window_t id) {
  for (const auto *window : {&floating_, &docked_}) {
    if (*window && (*window)->id() == id) {
      return window->get();
    }
  }
  return nullptr;
}

/// On the tray's own background where the window can show it, else on a tile.
void TrayIcon::draw(PictureWindow &window, int width, int height) {
  const int square = std::min(width, height);
  const double radius = square * tile_rounding;
  const bool has_alpha = window.pixels().has_alpha(),
             has_tile = !has_alpha || &window != docked_.get();
  Picture picture = filled_picture(width, height, has_alpha ? clear : tile_colour);
  if (has_tile) {
    draw_centred(picture, rounded_square(square, tile_colour, radius));
  }
  draw_centred(picture, delegate_.image(square));
  window.draw(picture);
  if (!has_alpha) {
    const auto part = static_cast<unsigned int>(square);
    window.cut({(width - square) / 2, (height - square) / 2, part, part}, radius);
  }
  drawn_ = {window.id(), width, height};
}

void TrayIcon::redraw_if_resized(const xcb_configure_notify_event_t &event) {
  PictureWindow *window = window_of(event.window);
  if (window && (drawn_.window != event.window || drawn_.width != event.width ||
                 drawn_.height != event.height)) {
    draw(*window, event.width, event.height);
  }
}

void TrayIcon::image_changed() {
  for (const auto *window : {&floating_, &docked_}) {
    const ScreenRect size = *window ? connection_.place_of((*window)->id()) : ScreenRect{};
    if (size.width > 0) {
      draw(**window, static_cast<int>(size.width), static_cast<int>(size.height));
    }
  }
  handle_events();
}

void TrayIcon::set_title(const std::string &title) {
  title_ = title;
  for (const auto *window : {&floating_, &docked_}) {
    if (*window) {
      (*window)->set_title(title);
    }
  }
  handle_events();
}

// --- Events -------------------------------------------------------------------------------------

// Sending requests may read events too, and then nothing would wake the run loop for them. So the
// last thing before returning is to find that there are none.
void TrayIcon::handle_events() {
  bool has_handled = true;
  while (has_handled) {
    connection_.flush();
    has_handled = false;
    while (const auto event = connection_.next_event()) {
      handle(*event);
      has_handled = true;
    }
  }
  if (connection_.is_lost()) {
    delegate_.lost();
  }
}

void TrayIcon::handle(const xcb_generic_event_t &event) {
  constexpr std::uint8_t sent = 0x80; // by another program
  switch (event.response_type & ~sent) {
  case XCB_CLIENT_MESSAGE:
    if (tray_.is_announced_by(as<xcb_client_message_event_t>(event)) &&
        (tray_.look_again() || !docked_)) {
      change_tray();
    }
    break;
  case XCB_PROPERTY_NOTIFY:
    handle_root_property(as<xcb_property_notify_event_t>(event).atom);
    break;
  case XCB_REPARENT_NOTIFY:
    handle_reparenting(as<xcb_reparent_notify_event_t>(event));
    break;
  case XCB_DESTROY_NOTIFY:
    handle_destruction(as<xcb_destroy_notify_event_t>(event).window);
    break;
  case XCB_CONFIGURE_NOTIFY:
    redraw_if_resized(as<xcb_configure_notify_event_t>(event));
    break;
  case XCB_BUTTON_PRESS:
    handle_press(as<xcb_button_press_event_t>(event), event.response_type & sent);
    break;
  case XCB_ENTER_NOTIFY:
    delegate_.pointed(true);
    break;
  case XCB_LEAVE_NOTIFY:
    delegate_.pointed(false);
    break;
  default:
    break; // errors among them: another program's window was gone already
  }
}

void TrayIcon::handle_root_property(xcb_atom_t property) {
  if (property == connection_.atom("_NET_WORKAREA") ||
      property == connection_.atom("_NET_CURRENT_DESKTOP") ||
      property == connection_.atom("RESOURCE_MANAGER")) {
    place_floating();
  } else if (property == connection_.atom("_NET_CLIENT_LIST_STACKING") ||
             property == connection_.atom("_NET_ACTIVE_WINDOW")) {
    stay_above();
  }
}

void TrayIcon::handle_reparenting(const xcb_reparent_notify_event_t &event) {
  if (!docked_ || event.window != docked_->id()) {
    return;
  }
  if (event.parent == connection_.root()) {
    handle_destruction(event.window); // the tray has let go of it
    return;
  }
  is_embedded_ = true;
  floating_.reset();
}

void TrayIcon::handle_destruction(xcb_window_t window) {
  if (docked_ && window == docked_->id()) {
    leave_tray();
    look_for_tray();
    // The same tray is not asked again before it announces itself: it might never stop.
    if (!docked_ && !floating_) {
      float_icon();
    }
  } else if (window == tray_.owner()) {
    tray_.look_again();
    change_tray(); // also when the next tray's window has the same id
  }
}

/// Some trays keep the icon's window out of sight, show its picture in their bar and send the
/// presses on that.
void TrayIcon::handle_press(const xcb_button_press_event_t &event, bool is_sent) {
  if (event.detail != XCB_BUTTON_INDEX_1 && event.detail != XCB_BUTTON_INDEX_3) {
    return;
  }
  // The button's grab belongs to this connection; the menu needs its own.
  xcb_ungrab_pointer(connection_.raw(), event.time);
  connection_.flush();
  delegate_.pressed(is_sent ? beside_bars(connection_, event.root_x, event.root_y) : place());
}

} // namespace td
