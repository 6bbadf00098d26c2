/// The clipboard as other programs see it. Texts are UTF-8. On connections of their own, whose loss
/// ends nothing but the call.
#pragma once

#include <string>

namespace td {

/// Whether the clipboard has `text`. Takes at most three seconds, whatever other programs do.
bool is_on_clipboard(const std::string &text);

/// Hands `text` over to the desktop's clipboard manager (freedesktop.org protocol). Does nothing
/// when there is none, or when the clipboard has another content by now. Takes at most eleven
/// seconds, whatever other programs do.
void hand_over_clipboard(const std::string &text);

} // namespace td
