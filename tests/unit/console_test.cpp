#include "console.h"

#include <string>

#include <gtest/gtest.h>

namespace {

template <typename Print> std::string printed(Print print) {
  testing::internal::CaptureStdout();
  print();
  return testing::internal::GetCapturedStdout();
}

std::string banner(bool run_receiver, bool run_sender) {
  Options options{Settings{}};
  options.run_receiver = run_receiver;
  options.run_sender = run_sender;
  return printed([&] { print_banner("http://10.0.0.5:4466/", options); });
}

constexpr const char *address = "\n  Dashboard  : \x1b[1;36mhttp://10.0.0.5:4466/\x1b[0m\n";
constexpr const char *no_sender =
    "  \x1b[2m(--no-sender: this machine is not offering its audio)\x1b[0m\n";
constexpr const char *end =
    "\n  \x1b[2mOpen the dashboard to choose devices and route audio.\x1b[0m\n"
    "  \x1b[2mCtrl-C here stops everything.\x1b[0m\n\n";

TEST(Console, TitleIsTheProductAndItsVersion) {
  EXPECT_EQ(printed([] { print_title("1.2.3+45"); }),
            "\n\x1b[1mTandrel\x1b[0m \x1b[2m1.2.3+45\x1b[0m\n");
}

TEST(Console, BannerNamesTheRequestedComponents) {
  EXPECT_EQ(banner(true, true),
            std::string(address) + "  Running    : hub, receiver, sender\n" + end);
  EXPECT_EQ(banner(false, true), std::string(address) + "  Running    : hub, sender\n" + end);
  EXPECT_EQ(banner(true, false),
            std::string(address) + "  Running    : hub, receiver\n" + no_sender + end);
  EXPECT_EQ(banner(false, false), std::string(address) + "  Running    : hub\n" + no_sender + end);
}

TEST(Console, VerboseNoteIsFollowedByAnEmptyLine) {
  EXPECT_EQ(printed(print_verbose_note),
            "\x1b[2m  (--verbose: the components are drawing their own "
            "terminal UIs over each other)\x1b[0m\n\n");
}

} // namespace
