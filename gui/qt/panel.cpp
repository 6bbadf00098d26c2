#include "qt/panel.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QGuiApplication>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>

namespace {

constexpr const char *watcher_service = "org.kde.StatusNotifierWatcher";
constexpr const char *watcher_path = "/StatusNotifierWatcher";
constexpr std::chrono::seconds bus_timeout(2);

struct Free {
  void operator()(void *memory) const { std::free(memory); }
};
template <typename Reply> using Owned = std::unique_ptr<Reply, Free>;

/// XCB_NONE when the connection is lost.
xcb_atom_t atom(xcb_connection_t *connection, const std::string &name) {
  const auto cookie = xcb_intern_atom(connection, 0, name.size(), name.c_str());
  const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
  return reply ? reply->atom : XCB_NONE;
}

/// The name of the selection whose owner is the screen's tray.
std::string tray_selection() {
  char *host = nullptr;
  int display = 0, screen = 0;
  xcb_parse_display(nullptr, &host, &display, &screen);
  std::free(host);
  return "_NET_SYSTEM_TRAY_S" + std::to_string(screen);
}

/// Has the server tell when that window is destroyed; false when it is already.
bool watch_window(xcb_connection_t *connection, xcb_window_t window) {
  const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  const auto cookie =
      xcb_change_window_attributes_checked(connection, window, XCB_CW_EVENT_MASK, &events);
  return !Owned<xcb_generic_error_t>(xcb_request_check(connection, cookie));
}

} // namespace

namespace td {

Panel::Panel(std::function<void(bool available)> changed) : changed_(std::move(changed)) {
  watch_tray();
  watch_bus();
}

Panel::~Panel() {
  qApp->removeNativeEventFilter(this);
}

// --- The bus ------------------------------------------------------------------------------------

void Panel::watch_bus() {
  for (QTimer *timer : {&bus_changed_, &tray_changed_, &bus_silent_}) {
    timer->setSingleShot(true);
  }
  QObject::connect(&bus_changed_, &QTimer::timeout, [this] { ask_bus(); });
  QObject::connect(&bus_silent_, &QTimer::timeout, [this] {
    bus_is_known_ = true;
    report();
  });
  QDBusConnection bus = QDBusConnection::sessionBus();
  bus_watcher_.setConnection(bus);
  bus_watcher_.addWatchedService(watcher_service);
  QObject::connect(&bus_watcher_, &QDBusServiceWatcher::serviceOwnerChanged, &bus_changed_,
                   [this] { bus_changed_.start(); });
  for (const char *signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
    bus.connect(watcher_service, watcher_path, watcher_service, signal, &bus_changed_,
                SLOT(start()));
  }
  bus.connect(QString(), "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local",
              "Disconnected", &bus_changed_, SLOT(start()));
  bus_silent_.start(bus_timeout);
  bus_changed_.start();
}

void Panel::ask_bus() {
  const QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) { // else there would be no answer at all
    bus_answered(false, false);
    return;
  }
  QDBusMessage question = QDBusMessage::createMethodCall(watcher_service, watcher_path,
                                                         "org.freedesktop.DBus.Properties", "Get");
  question << watcher_service << "IsStatusNotifierHostRegistered";
  question.setAutoStartService(false);
  auto *call = new QDBusPendingCallWatcher(bus.asyncCall(question), &bus_changed_);
  QObject::connect(call, &QDBusPendingCallWatcher::finished, [this, call] {
    const QDBusPendingReply<QDBusVariant> reply(*call);
    call->deleteLater();
    bus_answered(reply.isValid(), reply.isValid() && reply.value().variant().toBool());
  });
}

void Panel::bus_answered(bool has_watcher, bool has_host) {
  bus_is_known_ = true;
  has_watcher_ = has_watcher;
  has_host_ = has_host;
  report();
}

// --- The tray -----------------------------------------------------------------------------------

void Panel::watch_tray() {
  QObject::connect(&tray_changed_, &QTimer::timeout, [this] {
    find_tray();
    report();
  });
  const auto *x = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  connection_ = x != nullptr ? x->connection() : nullptr;
  if (connection_ != nullptr) {
    selection_ = atom(connection_, tray_selection());
    manager_ = atom(connection_, "MANAGER");
    qApp->installNativeEventFilter(this);
    find_tray();
  }
}

void Panel::find_tray() {
  const auto cookie = xcb_get_selection_owner(connection_, selection_);
  const Owned<xcb_get_selection_owner_reply_t> reply(
      xcb_get_selection_owner_reply(connection_, cookie, nullptr));
  tray_ = reply ? reply->owner : XCB_NONE;
  if (tray_ != XCB_NONE && !watch_window(connection_, tray_)) {
    tray_ = XCB_NONE;
  }
}

/// The timer lets Qt handle the event first.
bool Panel::nativeEventFilter(const QByteArray & /*type*/, void *message, qintptr * /*result*/) {
  const auto *event = static_cast<const xcb_generic_event_t *>(message);
  const int kind = event->response_type & 0x7f;
  if (kind == XCB_CLIENT_MESSAGE) { // a new tray announces itself to everybody
    const auto *announcement = static_cast<const xcb_client_message_event_t *>(message);
    if (announcement->type == manager_ && announcement->data.data32[1] == selection_) {
      tray_changed_.start();
    }
  } else if (kind == XCB_DESTROY_NOTIFY &&
             static_cast<const xcb_destroy_notify_event_t *>(message)->window == tray_) {
    tray_changed_.start();
  }
  return false;
}

void Panel::report() {
  if (!bus_is_known_) {
    return;
  }
  const bool by_bus = has_host_, by_tray = tray_ != XCB_NONE && !has_watcher_;
  if (kind_ == Kind::undecided && (by_bus || by_tray)) {
    kind_ = by_bus ? Kind::bus : Kind::tray;
  }
  const bool available = kind_ == Kind::bus ? has_host_ : tray_ != XCB_NONE && kind_ == Kind::tray;
  if (!reported_ || available != available_) {
    reported_ = true;
    available_ = available;
    changed_(available);
  }
}

} // namespace td
