/// The dialogs: one at a time; none of them blocks the caller, except alert(). Main thread only.
#pragma once

#include "tdgui.h"

namespace td {

/// Opens the dialog that moves the hub to other ports, or shows the dialog that is open already.
/// `config` must outlive it.
void open_settings(const tdgui::GuiConfig &config);

/// Brings the open dialog to the front; false when there is none.
bool raise_dialog();

/// Closes the open dialog as Cancel does.
void close_dialog();

} // namespace td
