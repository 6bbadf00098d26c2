/// A status line on the terminal, redrawn in place.
#pragma once

#include <string>
#include <string_view>

namespace standin {

/// The state of the line. Nothing is written if standard output is not a terminal.
struct StatusLine {
  bool on_terminal = false;
  bool drawn = false;
};

/// A status line on standard output, not drawn yet.
StatusLine make_status_line();

/// Replaces the line's text with `text` (ASCII without control characters), cut to the terminal's
/// width. Does nothing while the terminal does not accept output.
void draw_status_line(StatusLine &line, std::string_view text);

/// Ends the line with a newline, so that later output starts on the next one.
void finish_status_line(StatusLine &line);

/// A duration as "m:ss" or "h:mm:ss".
std::string format_duration(long long seconds);

} // namespace standin
