#include "x11/window_icon.h"

#include "x11/dialog_hints.h"
#include "x11/drawn_picture.h"
#include "x11/window_device.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

constexpr int sides[] = {16, 24, 32, 48}; // pixels; desktops take the one that fits best

/// The colours of a picture are multiplied with alpha, those of an icon are not.
unsigned long icon_pixel(std::uint32_t pixel) {
  const std::uint32_t alpha = pixel >> 24;
  unsigned long result = alpha;
  for (const int shift : {16, 8, 0}) {
    const std::uint32_t part = pixel >> shift & 255;
    result = result << 8 | (alpha ? std::min((part * 255 + alpha / 2) / alpha, 255U) : 0);
  }
  return result;
}

/// Adds the image's width, height and pixels.
void append(std::vector<unsigned long> &icons, NSImage *image, int side) {
  const td::Picture picture = td::drawn_picture(side, side, [&] {
    [image drawInRect:NSMakeRect(0, 0, side, side)
             fromRect:NSZeroRect
            operation:NSCompositeSourceOver
             fraction:1.0];
  });
  icons.insert(icons.end(), 2, static_cast<unsigned long>(side));
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      icons.push_back(icon_pixel(picture.at(x, y)));
    }
  }
}

} // namespace

namespace td {

void set_window_icon(NSWindow *window, NSImage *image) {
  @autoreleasepool {
    std::vector<unsigned long> icons;
    for (int side : sides) {
      append(icons, image, side);
    }
    set_icons(display_of(window), x_window_of(window), icons);
  }
}

} // namespace td
