#include "own_process.h"
#include "platform.h"

#include <gtest/gtest.h>

namespace {

TEST(Platform, ClosesDescriptors) {
  EXPECT_TRUE(holds_in_a_process_of_its_own(closes_descriptors));
}

} // namespace
