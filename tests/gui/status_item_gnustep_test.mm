// Whether the icon is flipped. Its bars are the same upside down, and only GNUstep's image can be
// asked.

#include "interface.h"

#include <gtest/gtest.h>

using namespace gui_test;

TEST(StatusItem, IconIsNotFlipped) {
  run_interface(full_config(), [](Interface interface) {
    EXPECT_FALSE([[[interface.item button] image] isFlipped]);
  });
}
