// What only GNUstep says of the icon: its bars are the same upside down, and AppKit's image no
// longer tells.

#include "interface.h"

#include <gtest/gtest.h>

using namespace gui_test;

TEST(StatusItem, IconIsNotFlipped) {
  run_interface(full_config(), [](Interface interface) {
    EXPECT_FALSE([[[interface.item button] image] isFlipped]);
  });
}
