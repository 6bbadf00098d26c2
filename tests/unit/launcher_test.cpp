// What launcher.cpp defines is local to it, so its tests are compiled together with it.
#define main launcher_main
#include "launcher.cpp" // NOLINT(bugprone-suspicious-include)
#undef main

#include "temporary_folder.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;

TEST(PortsInForce, AreReadAs16Bits) {
  publish_ports({65535, 4464});
  EXPECT_EQ(ctl_http_port(), 65535);
  EXPECT_EQ(ctl_udp_port(), 4464);
  g_http_port = 0x10000U + 4466U;
  g_udp_port = 0xFFFF0000U;
  EXPECT_EQ(ctl_http_port(), 4466);
  EXPECT_EQ(ctl_udp_port(), 0);
}

TEST(GuiConfig, IsFilledFromTheChildren) {
  Children children = make_children("/", Options{Settings{}});
  children.push_back(make_child("/", "", {}));
  const tdgui::GuiConfig config = make_gui_config(children, "http://10.0.0.5:4466/");
  EXPECT_EQ(config.url, "http://10.0.0.5:4466/");
  EXPECT_EQ(config.status, std::string("Tandrel ") + version);
  ASSERT_EQ(config.components.size(), 4U);
  EXPECT_EQ(config.components[0].name + config.components[0].label, "hubHub");
  EXPECT_EQ(config.components[1].name + config.components[1].label, "receiverReceiver");
  EXPECT_EQ(config.components[2].name + config.components[2].label, "senderSender");
  EXPECT_EQ(config.components[3].label, "");
  EXPECT_EQ(config.is_running, &ctl_is_running);
  EXPECT_EQ(config.start, &ctl_start);
  EXPECT_EQ(config.stop, &ctl_stop);
  EXPECT_EQ(config.restart, &ctl_restart);
  EXPECT_EQ(config.quit, &invoke_quit_hook);
  EXPECT_EQ(config.set_ports, &ctl_set_ports);
  EXPECT_EQ(config.http_port, &ctl_http_port);
  EXPECT_EQ(config.udp_port, &ctl_udp_port);
  EXPECT_EQ(config.open_browser_pref, &ctl_open_browser_pref);
  EXPECT_EQ(config.set_open_browser_pref, &ctl_set_open_browser_pref);
  EXPECT_EQ(config.quit_fallback, nullptr);
}

std::string refusal(int http, int udp) {
  std::string message;
  return ctl_set_ports(http, udp, message) ? "accepted" : message;
}

TEST(SetPorts, ChecksThePortsBeforeAnythingElse) {
  EXPECT_EQ(refusal(5000, 5000), "The dashboard and control ports must be different.");
  EXPECT_EQ(refusal(1024, 65535), "Not ready yet — try again in a moment.");
}

TEST(ControlOperations, DoNothingBeforeStartUpIsComplete) {
  EXPECT_FALSE(ctl_is_running("hub"));
  ctl_start("hub");
  ctl_stop("hub");
  ctl_restart("hub");
  invoke_quit_hook();
  EXPECT_TRUE(g_running);
}

struct Control : testing::Test {
  TemporaryFolder folder;
  Children children;

  void SetUp() override {
    for (const char *name : {"td_hub", "td_receiver", "td_sender"}) {
      (void)folder.write(name, "#!/bin/sh\nexec sleep 1000\n", true);
    }
    children = make_children(folder.prefix(), Options{Settings{}});
    install_controls(children);
  }
  void TearDown() override {
    stop_last_to_first(children);
    g_find_child = nullptr;
    g_apply_ports = nullptr;
  }
};

TEST_F(Control, StartWantsTheComponentAgainWithAFreshAllowance) {
  children[1].supervised = false;
  children[1].restarts = restarts_given_up;
  ctl_start("receiver");
  EXPECT_TRUE(ctl_is_running("receiver"));
  EXPECT_TRUE(children[1].supervised);
  EXPECT_EQ(children[1].restarts, 0);
  EXPECT_FALSE(ctl_is_running("sender"));
}

TEST_F(Control, StartLeavesARunningComponentEntirelyAlone) {
  ctl_start("sender");
  const pid_t pid = children[2].pid;
  children[2].supervised = false;
  children[2].restarts = 4;
  ctl_start("sender");
  EXPECT_EQ(children[2].pid, pid);
  EXPECT_FALSE(children[2].supervised);
  EXPECT_EQ(children[2].restarts, 4);
}

TEST_F(Control, StopMeansThatTheComponentIsNotWanted) {
  ctl_start("sender");
  children[2].restarts = 4;
  ctl_stop("sender");
  EXPECT_FALSE(ctl_is_running("sender"));
  EXPECT_FALSE(children[2].supervised);
  EXPECT_EQ(children[2].restarts, 4);
  ctl_stop("receiver"); // idle: only `supervised` changes
  EXPECT_FALSE(children[1].supervised);
}

TEST_F(Control, RestartStopsWhateverRunsAndStarts) {
  ctl_restart("hub");
  const pid_t first = children[0].pid;
  EXPECT_NE(first, -1);
  children[0].supervised = false;
  children[0].restarts = 4;
  ctl_restart("hub");
  EXPECT_NE(children[0].pid, first);
  EXPECT_TRUE(children[0].supervised);
  EXPECT_EQ(children[0].restarts, 0);
}

TEST_F(Control, FailuresAreReportedOnStandardError) {
  std::filesystem::remove(children[2].path);
  testing::internal::CaptureStderr();
  ctl_start("sender");
  ctl_restart("sender");
  ctl_start("sende");
  ctl_restart("");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Tandrel: could not start the sender\n"
                                                    "Tandrel: could not restart the sender\n");
  EXPECT_TRUE(children[2].supervised);
}

TEST_F(Control, APortChangeWithoutAHubChangesAllArgumentsAndStoresNothing) {
  publish_ports({4466, 4465});
  std::filesystem::remove(children[0].path);
  for (Child &child : children) {
    child.restarts = 3;
  }
  ctl_start("sender");
  EXPECT_EQ(refusal(5000, 4000), "Could not restart the hub.");
  EXPECT_FALSE(ctl_is_running("sender"));
  EXPECT_THAT(children[0].args, ElementsAre("--udp-port", "4000", "--http-port", "5000"));
  EXPECT_THAT(children[1].args, ElementsAre("--hub", "127.0.0.1:4000"));
  EXPECT_THAT(children[2].args, ElementsAre("--hub", "127.0.0.1:4000"));
  for (const Child &child : children) {
    EXPECT_EQ(child.restarts, 0);
  }
  EXPECT_EQ(ctl_http_port(), 4466);
  EXPECT_EQ(ctl_udp_port(), 4465);
}

TEST_F(Control, APortChangeWithAnEmptyListFails) {
  Children none;
  install_controls(none);
  EXPECT_EQ(refusal(5000, 4000), "Could not restart the hub.");
}

} // namespace
