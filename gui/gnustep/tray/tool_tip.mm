#include "tray/tool_tip.h"

#include "tray/floating_place.h"
#include "x11/drawn_picture.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int padding = 5, gap = 4; // pixels
constexpr CGFloat paper = 0.96, edge = 0.62;

NSDictionary *text_attributes(CGFloat density) {
  NSFont *font = [NSFont toolTipsFontOfSize:[NSFont smallSystemFontSize] * density];
  return [NSDictionary dictionaryWithObjectsAndKeys:font, NSFontAttributeName, [NSColor blackColor],
                                                    NSForegroundColorAttributeName, nil];
}

td::Picture picture_of(NSString *text, CGFloat density) {
  NSDictionary *attributes = text_attributes(density);
  const NSSize size = [text sizeWithAttributes:attributes];
  const int width = static_cast<int>(std::ceil(size.width)) + 2 * padding;
  const int height = static_cast<int>(std::ceil(size.height)) + 2 * padding;
  return td::drawn_picture(width, height, [&] {
    const NSRect frame = NSMakeRect(0, 0, width, height);
    [[NSColor colorWithCalibratedWhite:edge alpha:1] set];
    NSRectFill(frame);
    [[NSColor colorWithCalibratedWhite:paper alpha:1] set];
    NSRectFill(NSInsetRect(frame, 1, 1));
    [text drawAtPoint:NSMakePoint(padding, padding) withAttributes:attributes];
  });
}

td::ScreenRect place_beside(td::ScreenRect icon, td::ScreenRect monitor,
                            const td::Picture &picture) {
  const int right = monitor.x + static_cast<int>(monitor.width),
            bottom = monitor.y + static_cast<int>(monitor.height);
  const int middle = icon.x + static_cast<int>(icon.width) / 2;
  const int x = std::max(monitor.x, std::min(middle - picture.width / 2, right - picture.width));
  const int below = icon.y + static_cast<int>(icon.height) + gap;
  const int y = below + picture.height <= bottom ? below : icon.y - gap - picture.height;
  return {x, y, static_cast<unsigned int>(picture.width),
          static_cast<unsigned int>(picture.height)};
}

} // namespace

namespace td {

std::unique_ptr<PictureWindow> show_tool_tip(Connection &connection, NSString *text,
                                             ScreenRect icon, ScreenRect monitor) {
  const Picture picture = picture_of(text, pixel_density(connection));
  auto window = std::make_unique<PictureWindow>(
      connection, screen_pixels(connection), place_beside(icon, monitor, picture),
      PictureWindow::Managed::no, XCB_EVENT_MASK_NO_EVENT);
  window->draw(picture);
  window->show();
  connection.flush();
  return window;
}

} // namespace td
