#include "ports.h"

#include <string>

#include <gtest/gtest.h>

namespace {

std::string refusal(int http, int udp) {
  const char *objection = check_ports(http, udp);
  return objection == nullptr ? "accepted" : objection;
}

TEST(CheckPorts, NamesTheFirstObjection) {
  constexpr const char *range = "Ports must be between 1 and 65535.";
  constexpr const char *same = "The dashboard and control ports must be different.";
  constexpr const char *low = "Ports below 1024 need administrator privileges; pick higher ones.";
  EXPECT_EQ(refusal(0, 4465), range);
  EXPECT_EQ(refusal(4466, 0), range);
  EXPECT_EQ(refusal(-1, 4465), range);
  EXPECT_EQ(refusal(4466, 65536), range);
  EXPECT_EQ(refusal(65536, 65536), range);
  EXPECT_EQ(refusal(5000, 5000), same);
  EXPECT_EQ(refusal(80, 80), same);
  EXPECT_EQ(refusal(80, 4466), low);
  EXPECT_EQ(refusal(4466, 1023), low);
  EXPECT_EQ(refusal(1024, 65535), "accepted");
}

} // namespace
