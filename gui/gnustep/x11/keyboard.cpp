#include "x11/keyboard.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

namespace td {

char ascii_on_key(Display *display, unsigned int key_code) {
  for (int layout = 0; layout < XkbNumKbdGroups; ++layout) {
    const KeySym symbol = XkbKeycodeToKeysym(display, static_cast<KeyCode>(key_code), layout, 0);
    if (symbol > ' ' && symbol <= '~') { // there the symbols are ASCII
      return static_cast<char>(symbol);
    }
  }
  return 0;
}

bool has_key_for(Display *display, char character) {
  return XKeysymToKeycode(display, static_cast<unsigned char>(character)) != 0;
}

} // namespace td
