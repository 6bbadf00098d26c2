/// A connection of the layer's own to the X server, beside GNUstep's, for windows that live with
/// other programs: no error of theirs ends the process, and no event is read by somebody else.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <xcb/xcb.h>

namespace td {

/// Pixels; x and y from the screen's top left corner.
struct ScreenRect {
  int x;
  int y;
  unsigned int width;
  unsigned int height;
};

struct FreeMemory {
  void operator()(void *memory) const { std::free(memory); }
};
/// A reply, event or error of xcb's.
template <typename Type> using Received = std::unique_ptr<Type, FreeMemory>;

/// Main thread only. Requests are sent by flush() or by the next call that waits for an answer.
class Connection {
public:
  /// Connects to the default display. Throws std::runtime_error when that fails.
  Connection();
  ~Connection();
  Connection(const Connection &) = delete;
  Connection &operator=(const Connection &) = delete;

  xcb_connection_t *raw() const { return connection_; }
  /// The descriptor that becomes readable when events arrive.
  int descriptor() const { return xcb_get_file_descriptor(connection_); }
  /// Whether the X server has ended or has closed the connection.
  bool is_lost() const { return xcb_connection_has_error(connection_) != 0; }
  void flush() { xcb_flush(connection_); }
  /// The next event that has arrived, or null. flush() and calls that wait for an answer may read
  /// events too: the descriptor says nothing about those.
  Received<xcb_generic_event_t> next_event();

  /// The default screen and its number.
  const xcb_screen_t &screen() const { return *screen_; }
  int screen_number() const { return screen_number_; }
  xcb_window_t root() const { return screen_->root; }

  xcb_atom_t atom(const std::string &name);
  /// None: nobody owns the selection.
  xcb_window_t selection_owner(const std::string &selection);
  /// The numbers of a window's property with 32-bit values; empty when it has none.
  std::vector<std::uint32_t> numbers(xcb_window_t window, const std::string &property);
  /// The bytes of a window's property with 8-bit values; empty when it has none.
  std::string text(xcb_window_t window, const std::string &property);
  /// The window's place on the screen; all 0 when it does not exist.
  ScreenRect place_of(xcb_window_t window);
  /// Adds to the events of another program's window that arrive here.
  void watch(xcb_window_t window, std::uint32_t events);

private:
  Received<xcb_get_property_reply_t> get_property(xcb_window_t window, const std::string &property);

  int screen_number_ = 0; // set by connecting
  xcb_connection_t *connection_;
  xcb_screen_t *screen_ = nullptr;
  std::map<std::string, xcb_atom_t> atoms_;
};

} // namespace td
