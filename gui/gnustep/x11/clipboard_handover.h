/// Keeps a copied text on the clipboard beyond the end of the process.
#pragma once

#include <string>

namespace td {

/// Hands `text` (UTF-8) over to the desktop's clipboard manager (freedesktop.org protocol). Does
/// nothing when there is none, or when the clipboard has another content by now. Takes at most
/// ten seconds, whatever other programs do; uses a connection of its own, and a loss of it
/// ends nothing but the handover.
void hand_over_clipboard(const std::string &text);

} // namespace td
