/// Callbacks for an interface that record their calls: the same for every system's interface.
#pragma once

#include "tdgui.h"

#include <map>
#include <string>
#include <vector>

namespace gui_test {

using Calls = std::vector<std::string>;

/// What the callbacks return, and what they were called with.
struct Record {
  std::map<std::string, bool> running = {{"hub", true}, {"receiver", true}, {"sender", true}};
  int http = 8080; ///< an accepted set_ports changes both
  int udp = 8081;
  bool ports_accepted = true;
  std::string refusal;
  bool open_browser = false;
  Calls calls; ///< "stop hub", "set_ports 1 2 ''", ...; getters are not recorded
  int is_running_calls = 0;
};

/// The one record.
Record &record();

/// Resets the record. Returns three components, and every callback except quit_fallback; the
/// callbacks use record() and fail the test if they are called on any thread but the main one.
tdgui::GuiConfig recorded_config();

/// Removes the callbacks for which a bit of `dropped`, 0 to 127, is set.
void drop_callbacks(tdgui::GuiConfig &config, unsigned dropped);

/// An is_running that records the name it was asked for.
bool note_question(const std::string &name);

/// The names with which opening the menu calls note_question: for the header up to the first
/// component that does not run, then for each row.
Calls expected_questions();

/// Sets which components run, by the lowest three bits.
void set_states(unsigned combination);

} // namespace gui_test
