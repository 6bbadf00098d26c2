// The two functions that the launcher calls in tdgui.so.

#include "scripted.h"

namespace {

[[gnu::constructor]] void load() {
  scripted::load();
}

} // namespace

extern "C" bool tdgui_available() {
  return scripted::is_available();
}

extern "C" void tdgui_run(const tdgui::GuiConfig *gui) {
  scripted::run(*gui);
}
