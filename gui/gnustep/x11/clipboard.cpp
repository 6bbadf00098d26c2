#include "x11/clipboard.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <vector>

#include <poll.h>
#include <xcb/xcb.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds read_timeout(500); // for the clipboard's owner
constexpr int most_reads = 6;
constexpr std::chrono::seconds time_timeout(3); // for the X server's time
constexpr std::chrono::seconds save_timeout(5); // for the clipboard manager
constexpr std::uint32_t most_words = 0x10000;   // of a property that is read

struct FreeMemory {
  void operator()(void *memory) const { std::free(memory); }
};
template <typename Type> using Received = std::unique_ptr<Type, FreeMemory>;

bool is_ascii(const std::string &text) {
  return std::all_of(text.begin(), text.end(),
                     [](char letter) { return static_cast<unsigned char>(letter) < 0x80; });
}

/// A client with a window, which can own the clipboard. XCB reports errors, such as that a window
/// of another program does not exist any more, as events, which are passed over here.
class Client {
public:
  explicit Client(std::string text) : text_(std::move(text)) {
    connection_ = xcb_connect(nullptr, nullptr);
    if (is_lost()) {
      return;
    }
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    window_ = xcb_generate_id(connection_);
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_, 0, window_, screen->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, screen->root_visual, XCB_CW_EVENT_MASK, &events);
    clipboard_ = atom("CLIPBOARD");
    manager_ = atom("CLIPBOARD_MANAGER");
    utf8_ = atom("UTF8_STRING");
    transfer_ = atom("TD_TRANSFER");
    targets_ = atom("TARGETS");
    multiple_ = atom("MULTIPLE");
    timestamp_ = atom("TIMESTAMP");
    texts_ = {utf8_, atom("text/plain;charset=utf-8")};
    if (is_ascii(text_)) {
      texts_.push_back(XCB_ATOM_STRING);
    }
  }
  ~Client() { xcb_disconnect(connection_); }
  Client(const Client &) = delete;
  Client &operator=(const Client &) = delete;

  bool has_manager() {
    const auto cookie = xcb_get_selection_owner(connection_, manager_);
    const Received<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(connection_, cookie, nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
  }

  /// Whether the clipboard has the text. Asks again when there is no answer.
  bool is_current() {
    for (int read = 0; read < most_reads; ++read) {
      xcb_convert_selection(connection_, window_, clipboard_, utf8_, transfer_, XCB_CURRENT_TIME);
      if (const auto converted = wait_for_notify(clipboard_, read_timeout)) {
        return *converted && property(window_, utf8_) == text_;
      }
    }
    return false;
  }

  /// Becomes the owner of the clipboard and has the manager save it.
  void save() {
    const std::optional<xcb_timestamp_t> time = server_time();
    if (!time) {
      return;
    }
    time_ = *time;
    xcb_set_selection_owner(connection_, window_, clipboard_, time_);
    set_property(window_, transfer_, XCB_ATOM_ATOM, 32, texts_.size(), texts_.data());
    xcb_convert_selection(connection_, window_, manager_, atom("SAVE_TARGETS"), transfer_, time_);
    wait_for_notify(manager_, save_timeout);
  }

private:
  bool is_lost() { return xcb_connection_has_error(connection_) != 0; }

  xcb_atom_t atom(const std::string &name) {
    const auto cookie =
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const Received<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
  }

  void set_property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type, std::uint8_t bits,
                    std::size_t count, const void *data) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, name, type, bits,
                        static_cast<std::uint32_t>(count), data);
  }

  /// The bytes of the transfer's property.
  std::string property(xcb_window_t window, xcb_atom_t type) {
    return property(window, transfer_, type);
  }
  std::string property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) {
    const auto cookie = xcb_get_property(connection_, 0, window, name, type, 0, most_words);
    const Received<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection_, cookie, nullptr));
    if (!reply) {
      return "";
    }
    return {static_cast<const char *>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
  }

  /// The next event that comes before `deadline`, or null.
  Received<xcb_generic_event_t> next_event(Clock::time_point deadline) {
    for (;;) {
      xcb_flush(connection_);
      Received<xcb_generic_event_t> event(xcb_poll_for_event(connection_));
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
      if (event || is_lost() || left <= 0) {
        return event;
      }
      pollfd descriptor = {xcb_get_file_descriptor(connection_), POLLIN, 0};
      poll(&descriptor, 1, static_cast<int>(left));
    }
  }

  /// The X server's time, which it tells with every change of a property.
  std::optional<xcb_timestamp_t> server_time() {
    set_property(window_, transfer_, XCB_ATOM_ATOM, 32, 0, nullptr);
    const auto deadline = Clock::now() + time_timeout;
    while (const auto event = next_event(deadline)) {
      if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY) {
        return reinterpret_cast<const xcb_property_notify_event_t &>(*event).time;
      }
    }
    return std::nullopt;
  }

  /// Answers requests until there is an answer about `selection`: whether it was converted.
  std::optional<bool> wait_for_notify(xcb_atom_t selection, Clock::duration timeout) {
    const auto deadline = Clock::now() + timeout;
    while (const auto event = next_event(deadline)) {
      const int type = event->response_type & 0x7f;
      if (type == XCB_SELECTION_REQUEST) {
        answer(reinterpret_cast<const xcb_selection_request_event_t &>(*event));
      } else if (type == XCB_SELECTION_NOTIFY) {
        const auto &notify = reinterpret_cast<const xcb_selection_notify_event_t &>(*event);
        if (notify.selection == selection) {
          return notify.property != XCB_ATOM_NONE;
        }
      }
    }
    return std::nullopt;
  }

  void answer(const xcb_selection_request_event_t &request) {
    xcb_selection_notify_event_t notify = {};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    const xcb_atom_t name = request.property != XCB_ATOM_NONE ? request.property : request.target;
    const bool done = request.target == multiple_
                          ? convert_each(request.requestor, name)
                          : convert(request.requestor, request.target, name);
    notify.property = done ? name : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    xcb_send_event(connection_, 0, request.requestor, 0, reinterpret_cast<const char *>(&notify));
  }

  /// A request for several targets: pairs of a target and a property.
  bool convert_each(xcb_window_t requestor, xcb_atom_t list) {
    const std::string bytes = property(requestor, list, XCB_GET_PROPERTY_TYPE_ANY);
    std::vector<xcb_atom_t> pairs(bytes.size() / sizeof(xcb_atom_t) / 2 * 2);
    std::copy_n(bytes.data(), pairs.size() * sizeof(xcb_atom_t),
                reinterpret_cast<char *>(pairs.data()));
    for (std::size_t i = 0; i < pairs.size(); i += 2) {
      if (!convert(requestor, pairs[i], pairs[i + 1])) {
        pairs[i + 1] = XCB_ATOM_NONE;
      }
    }
    set_property(requestor, list, atom("ATOM_PAIR"), 32, pairs.size(), pairs.data());
    return true;
  }

  // Both atoms are numbers to XCB. NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
  bool convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t name) {
    if (target == targets_) {
      std::vector<xcb_atom_t> all = {targets_, multiple_, timestamp_};
      all.insert(all.end(), texts_.begin(), texts_.end());
      set_property(requestor, name, XCB_ATOM_ATOM, 32, all.size(), all.data());
    } else if (target == timestamp_) {
      set_property(requestor, name, XCB_ATOM_INTEGER, 32, 1, &time_);
    } else if (std::find(texts_.begin(), texts_.end(), target) != texts_.end()) {
      set_property(requestor, name, target, 8, text_.size(), text_.data());
    } else {
      return false;
    }
    return true;
  }

  std::string text_;
  xcb_connection_t *connection_;
  xcb_window_t window_ = XCB_WINDOW_NONE;
  xcb_timestamp_t time_ = XCB_CURRENT_TIME;
  xcb_atom_t clipboard_ = XCB_ATOM_NONE, manager_ = XCB_ATOM_NONE, utf8_ = XCB_ATOM_NONE,
             transfer_ = XCB_ATOM_NONE, targets_ = XCB_ATOM_NONE, multiple_ = XCB_ATOM_NONE,
             timestamp_ = XCB_ATOM_NONE;
  std::vector<xcb_atom_t> texts_; // the targets that give the text
};

} // namespace

namespace td {

bool is_on_clipboard(const std::string &text) {
  return Client(text).is_current();
}

void hand_over_clipboard(const std::string &text) {
  Client client(text);
  if (client.has_manager() && client.is_current()) {
    client.save();
  }
}

} // namespace td
