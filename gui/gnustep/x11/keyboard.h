/// What the keys of the keyboard type.
#pragma once

struct _XDisplay; // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): Xlib's

namespace td {

/// The printable ASCII character on the key, without modifiers, in the first of the keyboard's
/// layouts that has one there; 0 if none has. Of the letters the small one.
char ascii_on_key(_XDisplay *display, unsigned int key_code);

/// Whether a key types the printable ASCII character in any of the keyboard's layouts.
bool has_key_for(_XDisplay *display, char character);

} // namespace td
