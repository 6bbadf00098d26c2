/// One line on a terminal that is drawn over again.
#pragma once

#include <string>
#include <string_view>

namespace standin {

/// A line on standard output. Without a terminal there nothing is ever written.
struct StatusLine {
  bool on_terminal = false;
  bool drawn = false;
};

/// The status line of this process.
StatusLine make_status_line();

/// Draws `text` (ASCII, no control characters) over what the line showed, cut to the terminal's
/// width. Skipped when the terminal does not take output now.
void draw(StatusLine &line, std::string_view text);

/// Leaves the line as it is and moves below it.
void leave(StatusLine &line);

/// A duration as "m:ss" or "h:mm:ss".
std::string format_duration(long long seconds);

} // namespace standin
