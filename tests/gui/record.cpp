#include "record.h"

#include "config_layout.h"

#include <thread>

#include <gtest/gtest.h>

namespace gui_test {
namespace {

Record g_record;
const std::thread::id g_main_thread = std::this_thread::get_id();

void expect_main_thread() {
  EXPECT_EQ(std::this_thread::get_id(), g_main_thread);
}

void note(const std::string &call) {
  expect_main_thread();
  g_record.calls.push_back(call);
}

bool is_running(const std::string &name) {
  expect_main_thread();
  ++g_record.is_running_calls;
  return g_record.running.at(name);
}
void start(const std::string &name) {
  note("start " + name);
}
void stop(const std::string &name) {
  note("stop " + name);
}
void restart(const std::string &name) {
  note("restart " + name);
}
void quit() {
  note("quit");
}
bool set_ports(int http, int udp, std::string &error) {
  note("set_ports " + std::to_string(http) + " " + std::to_string(udp) + " '" + error + "'");
  if (!g_record.ports_accepted) {
    error = g_record.refusal;
    return false;
  }
  g_record.http = http;
  g_record.udp = udp;
  return true;
}
int http_port() {
  expect_main_thread();
  return g_record.http;
}
int udp_port() {
  expect_main_thread();
  return g_record.udp;
}
bool open_browser_pref() {
  expect_main_thread();
  return g_record.open_browser;
}
void set_open_browser_pref(bool open) {
  note(open ? "open_browser on" : "open_browser off");
  g_record.open_browser = open;
}

} // namespace

Record &record() {
  return g_record;
}

tdgui::GuiConfig recorded_config() {
  g_record = Record();
  tdgui::GuiConfig config;
  config.url = "http://localhost:8080/";
  config.status = "Tandrel 9.9";
  config.components = {{"hub", "Hub"}, {"receiver", "Receiver"}, {"sender", "Sender"}};
  config.is_running = is_running;
  config.start = start;
  config.stop = stop;
  config.restart = restart;
  config.quit = quit;
  config.set_ports = set_ports;
  config.http_port = http_port;
  config.udp_port = udp_port;
  config.open_browser_pref = open_browser_pref;
  config.set_open_browser_pref = set_open_browser_pref;
  return config;
}

void drop_callbacks(tdgui::GuiConfig &config, unsigned dropped) {
  if (dropped & 1) {
    config.is_running = nullptr;
  }
  if (dropped & 2) {
    config.open_browser_pref = nullptr;
  }
  if (dropped & 4) {
    config.set_open_browser_pref = nullptr;
  }
  if (dropped & 8) {
    config.start = nullptr;
  }
  if (dropped & 16) {
    config.stop = nullptr;
  }
  if (dropped & 32) {
    config.restart = nullptr;
  }
  if (dropped & 64) {
    config.quit = nullptr;
    config.set_ports = nullptr;
    config.http_port = config.udp_port = nullptr;
  }
}

bool note_question(const std::string &name) {
  note(name);
  return g_record.running.at(name);
}

Calls expected_questions() {
  const Calls names = {"hub", "receiver", "sender"};
  Calls questions;
  for (const std::string &name : names) {
    questions.push_back(name);
    if (!g_record.running.at(name)) {
      break;
    }
  }
  questions.insert(questions.end(), names.begin(), names.end());
  return questions;
}

void set_states(unsigned combination) {
  g_record.running = {{"hub", (combination & 1) != 0},
                      {"receiver", (combination & 2) != 0},
                      {"sender", (combination & 4) != 0}};
}

} // namespace gui_test
