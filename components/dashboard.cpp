#include "dashboard.h"

#include "json.h"
#include "signals.h"

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include <httplib.h>
#include <sys/socket.h>
#include <unistd.h>

namespace standin {
namespace {

constexpr std::size_t server_threads = 4;
constexpr const char *json_type = "application/json";
constexpr const char *html_type = "text/html; charset=utf-8";

/// Drops every request without a response and leaves its connection open.
class SilentQueue : public httplib::TaskQueue {
  // The return type is void or bool, depending on the version of the library.
  using Accepted = decltype(std::declval<httplib::TaskQueue &>().enqueue({}));

public:
  Accepted enqueue(std::function<void()> /*job*/) override { return Accepted(true); }
  void shutdown() override {}
};

long long milliseconds(Clock::duration time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

std::string registration_json(const Registration &registration, Clock::time_point now) {
  const auto since =
      std::chrono::duration_cast<std::chrono::milliseconds>(registration.since.time_since_epoch());
  return R"({"role":)" + json_string(role_name(registration.role)) + R"(,"address":)" +
         json_string(registration.address) + R"(,"pid":)" + std::to_string(registration.pid) +
         R"(,"since_unix_ms":)" + std::to_string(since.count()) + R"(,"registered_ms":)" +
         std::to_string(milliseconds(now - registration.since_steady)) + R"(,"renewed_ms_ago":)" +
         std::to_string(milliseconds(now - registration.renewed)) + "}";
}

std::string state_json(const HubState &state) {
  const auto now = Clock::now();
  std::string registrations;
  for (const Registration &registration : list_registered(state.registry, now)) {
    registrations += registrations.empty() ? "" : ",";
    registrations += registration_json(registration, now);
  }
  return R"({"program":"td_hub","stand_in":true,"pid":)" + std::to_string(getpid()) +
         R"(,"udp_port":)" + std::to_string(state.udp_port) + R"(,"http_port":)" +
         std::to_string(state.http_port) + R"(,"uptime_ms":)" +
         std::to_string(milliseconds(now - state.start)) + R"(,"registrations":[)" + registrations +
         "]}\n";
}

/// With SO_REUSEADDR, a restarted hub can listen while connections of the last one are still in
/// TIME_WAIT, but two hubs cannot listen at the same time. The library's default would let them.
void set_reuse_address(socket_t descriptor) {
  const int yes = 1;
  setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

void configure_server(httplib::Server &server, const Behaviour &behaviour) {
  server.set_address_family(AF_INET);
  server.set_socket_options(set_reuse_address);
  // No keep-alive: an idle connection would occupy a thread, which polls it.
  server.set_keep_alive_max_count(1);
  server.set_keep_alive_timeout(1);
  server.set_read_timeout(1);
  server.set_default_headers({
      {"Cache-Control", "no-store"},
      {"X-Content-Type-Options", "nosniff"},
      {"Content-Security-Policy", "default-src 'none'; style-src 'unsafe-inline'; script-src "
                                  "'unsafe-inline'; img-src data:; connect-src 'self'; base-uri "
                                  "'none'; form-action 'none'"},
  });
  const bool silent = behaviour.never_answer;
  server.new_task_queue = [silent]() -> httplib::TaskQueue * {
    // The server takes ownership.
    return silent ? static_cast<httplib::TaskQueue *>(new SilentQueue)
                  : new httplib::ThreadPool(server_threads);
  };
}

/// If `port` is 0, sets it to the port that the system has chosen. False on failure.
bool bind_server(httplib::Server &server, int &port) {
  const char *every_interface = "0.0.0.0";
  if (port != 0) {
    return server.bind_to_port(every_interface, port);
  }
  const int chosen = server.bind_to_any_port(every_interface);
  port = chosen > 0 ? chosen : port;
  return chosen > 0;
}

void add_misbehaviours(httplib::Server &server, const Behaviour &behaviour) {
  if (!behaviour.slow_answer && !behaviour.answer_404) {
    return;
  }
  server.set_pre_routing_handler([delay = behaviour.slow_answer,
                                  deny = behaviour.answer_404](const httplib::Request & /*request*/,
                                                               httplib::Response &response) {
    if (delay) {
      std::this_thread::sleep_for(*delay);
    }
    if (!deny) {
      return httplib::Server::HandlerResponse::Unhandled;
    }
    response.status = 404;
    response.set_content("not found\n", "text/plain");
    return httplib::Server::HandlerResponse::Handled;
  });
}

void add_pages(httplib::Server &server, const HubState &state) {
  server.Get("/", [](const httplib::Request & /*request*/, httplib::Response &response) {
    const std::string_view page = dashboard_page();
    response.set_content(page.data(), page.size(), html_type);
  });
  server.Get("/api/health", [](const httplib::Request & /*request*/, httplib::Response &response) {
    response.set_content("{\"status\":\"ok\",\"program\":\"td_hub\",\"stand_in\":true}\n",
                         json_type);
  });
  server.Get("/api/state",
             [&state](const httplib::Request & /*request*/, httplib::Response &response) {
               response.set_content(state_json(state), json_type);
             });
}

} // namespace

int start_dashboard(HubState &state, const Behaviour &behaviour, std::function<void()> on_failure) {
  auto server = std::make_shared<httplib::Server>();
  configure_server(*server, behaviour);
  errno = 0;
  if (!bind_server(*server, state.http_port)) {
    return errno != 0 ? errno : EADDRINUSE;
  }
  add_misbehaviours(*server, behaviour);
  add_pages(*server, state);
  start_thread_with_signals_blocked([server, on_failure = std::move(on_failure)] {
    server->listen_after_bind();
    on_failure();
  });
  return 0;
}

} // namespace standin
