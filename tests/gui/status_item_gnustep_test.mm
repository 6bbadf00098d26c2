// The status item's image and its place on the screen.

#include "interface.h"
#include "tray/status_icon.h"
#include "x11/connection.h"

#include <cstdlib>

#include <gtest/gtest.h>

using namespace gui_test;

@interface NSStatusItem (TDIcon)
/// What the layer's status item shows on the screen.
- (TDStatusIcon *)icon;
@end

namespace {

/// Whether the X server shows the bars' colour in the middle of the rectangle.
bool shows_ink(NSRect rect) {
  td::Connection connection;
  const td::ScreenRect screen = connection.place_of(connection.root());
  const td::Received<xcb_get_image_reply_t> image(xcb_get_image_reply(
      connection.raw(),
      xcb_get_image(connection.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, connection.root(),
                    static_cast<std::int16_t>(NSMidX(rect)),
                    static_cast<std::int16_t>(screen.height - NSMidY(rect)), 1, 1, ~0U),
      nullptr));
  const std::uint8_t *pixel = xcb_get_image_data(image.get()); // blue, green, red
  return std::abs(pixel[2] - 77) < 3 && std::abs(pixel[1] - 201) < 3 &&
         std::abs(pixel[0] - 191) < 3;
}

} // namespace

TEST(StatusItem, IconIsNotFlipped) {
  run_interface(full_config(), [](Interface interface) {
    EXPECT_FALSE([[[interface.item button] image] isFlipped]);
  });
}

TEST(StatusItem, HasNoWindowOfGnusteps) {
  run_interface(full_config(),
                [](Interface interface) { EXPECT_TRUE([[interface.item button] window] == nil); });
}

TEST(StatusItem, IsShownAtTheTopRight) {
  run_interface(full_config(), [](Interface interface) {
    const NSRect screen = [[NSScreen mainScreen] frame];
    const NSRect icon = [[interface.item icon] frameOnScreen];
    EXPECT_EQ(NSWidth(icon), 22);
    EXPECT_EQ(NSHeight(icon), 22);
    EXPECT_EQ(NSMaxX(icon), NSMaxX(screen) - 8);
    EXPECT_EQ(NSMaxY(icon), NSMaxY(screen) - 8);
    EXPECT_TRUE(shows_ink(icon));
  });
}
