/// Pictures drawn by AppKit.
#pragma once

#include "x11/picture.h"

#include <functional>

namespace td {

/// What `draw` draws into a rectangle of the given size, in pixels, whose origin is at the bottom
/// left; it may change the graphics state. Calls it twice. Main thread only.
Picture drawn_picture(int width, int height, const std::function<void()> &draw);

} // namespace td
