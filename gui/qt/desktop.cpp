#include "qt/desktop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

namespace {

constexpr const char *service = "org.kde.StatusNotifierWatcher", *path = "/StatusNotifierWatcher";

enum Atom { tray_selection, manager, active_window, stacking, state, fullscreen };

struct Free {
  void operator()(void *memory) const { std::free(memory); }
};
template <typename Reply> using Owned = std::unique_ptr<Reply, Free>;

/// The windows or atoms of a window's property.
std::u32string values(xcb_connection_t *connection, xcb_window_t window, xcb_atom_t property) {
  const auto cookie = xcb_get_property(connection, 0, window, property, XCB_ATOM_ANY, 0, 64);
  const Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, nullptr));
  if (!reply || reply->format != 32) {
    return {};
  }
  return {static_cast<const char32_t *>(xcb_get_property_value(reply.get())), reply->value_len};
}

} // namespace

namespace td {

Desktop::Desktop(std::function<void()> panels, std::function<void()> covered)
    : panels_(std::move(panels)), covered_(std::move(covered)) {
  const auto *x = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x != nullptr && x->connection() != nullptr) {
    watch_screen(x->connection());
  }
  bus_changed_.setSingleShot(true);
  bus_changed_.callOnTimeout([this] { ask_bus(); });
  QDBusConnection bus = QDBusConnection::sessionBus();
  for (const char *signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
    bus.connect(service, path, service, signal, &bus_changed_, SLOT(start()));
  }
  bus.connect("", "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local", "Disconnected",
              &bus_changed_, SLOT(start()));
  const auto follow = [this](const QString &name, const QString & /*old*/, const QString &owner) {
    panel_died_ = name == service ? panel_died_ : owner.isEmpty();
    bus_changed_.start();
  };
  // Of these two desktops the service outlives the panel, and still says that there is one.
  auto *owners = new QDBusServiceWatcher(this);
  owners->setConnection(bus);
  owners->setWatchedServices({service, "org.kde.plasmashell", "org.Cinnamon"});
  QObject::connect(owners, &QDBusServiceWatcher::serviceOwnerChanged, this, follow);
  bus_changed_.start();
}

void Desktop::ask_bus() {
  const QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) { // else there would be no answer at all
    bus_ = Bus::without_host;
    panels_();
    return;
  }
  QDBusMessage question =
      QDBusMessage::createMethodCall(service, path, "org.freedesktop.DBus.Properties", "Get");
  question << service << "IsStatusNotifierHostRegistered";
  question.setAutoStartService(false);
  const int timeout = bus_ == Bus::unknown ? 1000 : -1; // ms
  auto *call = new QDBusPendingCallWatcher(bus.asyncCall(question, timeout), this);
  QObject::connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
    const QDBusPendingReply<QDBusVariant> reply(*call);
    call->deleteLater();
    const bool has_host = !panel_died_ && reply.isValid() && reply.value().variant().toBool();
    const bool is_silent = reply.error().type() == QDBusError::NoReply;
    const Bus without = is_silent ? Bus::silent : Bus::without_host;
    bus_ = has_host ? Bus::with_host : without;
    panels_();
    if (is_silent) {
      bus_changed_.start(); // it may still answer
    }
  });
}

void Desktop::watch_screen(xcb_connection_t *connection) {
  connection_ = connection;
  char *host = nullptr;
  int display = 0, screen = 0;
  xcb_parse_display(nullptr, &host, &display, &screen);
  std::free(host);
  const std::string selection = "_NET_SYSTEM_TRAY_S" + std::to_string(screen);
  for (const char *name :
       {selection.c_str(), "MANAGER", "_NET_ACTIVE_WINDOW", "_NET_CLIENT_LIST_STACKING",
        "_NET_WM_STATE", "_NET_WM_STATE_FULLSCREEN"}) {
    const auto cookie = xcb_intern_atom(connection, 0, std::strlen(name), name);
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
    atoms_.push_back(reply ? reply->atom : XCB_NONE);
  }
  qApp->installNativeEventFilter(this); // until it is destroyed
  find_tray();
}

void Desktop::find_tray() {
  const Owned<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
      connection_, xcb_get_selection_owner(connection_, atoms_[tray_selection]), nullptr));
  tray_ = reply ? reply->owner : XCB_NONE;
  // Asks the server to report the tray's end, which may have come already.
  const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  const auto watch =
      xcb_change_window_attributes_checked(connection_, tray_, XCB_CW_EVENT_MASK, &events);
  if (Owned<xcb_generic_error_t>(xcb_request_check(connection_, watch))) {
    tray_ = XCB_NONE;
  }
  if (bus_ != Bus::unknown) {
    panels_();
  }
}

bool Desktop::is_embedded(xcb_window_t window) const {
  const Owned<xcb_query_tree_reply_t> tree(
      xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), nullptr));
  return tree && tree->parent != tree->root;
}

/// Only queues work, so that Qt handles the event first.
bool Desktop::nativeEventFilter(const QByteArray & /*type*/, void *message, qintptr * /*result*/) {
  const auto *event = static_cast<const xcb_generic_event_t *>(message);
  const auto *announcement = static_cast<const xcb_client_message_event_t *>(message);
  const auto *destroyed = static_cast<const xcb_destroy_notify_event_t *>(message);
  const auto *property = static_cast<const xcb_property_notify_event_t *>(message);
  const int kind = event->response_type & 0x7f;
  // A new tray announces itself to everybody.
  if ((kind == XCB_CLIENT_MESSAGE && announcement->type == atoms_[manager] &&
       announcement->data.data32[1] == atoms_[tray_selection]) ||
      (kind == XCB_DESTROY_NOTIFY && destroyed->window == tray_) || kind == XCB_REPARENT_NOTIFY) {
    QMetaObject::invokeMethod(this, &Desktop::find_tray, Qt::QueuedConnection);
  } else if (kind == XCB_PROPERTY_NOTIFY &&
             (property->atom == atoms_[active_window] || property->atom == atoms_[stacking])) {
    const auto rise = [this, root = property->window] {
      const std::u32string active = values(connection_, root, atoms_[active_window]);
      if (active.empty() ||
          values(connection_, active[0], atoms_[state]).find(atoms_[fullscreen]) ==
              std::u32string::npos) {
        covered_();
      }
    };
    QMetaObject::invokeMethod(this, rise, Qt::QueuedConnection);
  }
  return false;
}

} // namespace td
