#include "host.h"
#include "temporary_folder.h"

#include <csignal>
#include <cstdlib>

#include <gmock/gmock.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace {

/// Puts recording tools alone on the PATH.
struct Tools : testing::Test {
  TemporaryFolder folder;
  std::string path_before = std::getenv("PATH");

  void SetUp() override { setenv("PATH", folder.path.c_str(), 1); }
  void TearDown() override { setenv("PATH", path_before.c_str(), 1); }

  /// A tool that writes its arguments, each ended by "|", and then does as told.
  void add(const std::string &name, const std::string &then = "") const {
    (void)folder.write(
        name, "#!/bin/sh\nprintf '%s|' \"$@\" > " + folder.prefix() + name + ".said\n" + then,
        true);
  }
  [[nodiscard]] std::string said(const std::string &name) const {
    return folder.read(name + ".said");
  }
  static std::string dialog(const std::string &message) {
    testing::internal::CaptureStderr();
    fatal_dialog(message);
    return testing::internal::GetCapturedStderr();
  }
};

TEST(RunTool, TellsHowTheCommandEnded) {
  EXPECT_EQ(run_tool("true"), ToolEnd::success);
  EXPECT_EQ(run_tool("exit 3"), ToolEnd::failure);
  EXPECT_EQ(run_tool("kill -TERM $$"), ToolEnd::failure);
  EXPECT_EQ(run_tool("kill -INT $$"), ToolEnd::interrupted);
  EXPECT_EQ(run_tool("exit 130"), ToolEnd::interrupted);
  EXPECT_EQ(run_tool("no-such-command 2>/dev/null"), ToolEnd::failure);
}

TEST(RunTool, DoesNotKeepASigintFromTheCaller) {
  static volatile std::sig_atomic_t received = 0;
  (void)signal(SIGINT, [](int) { received = 1; });
  EXPECT_EQ(run_tool("kill -INT " + std::to_string(getpid())), ToolEnd::success);
  EXPECT_EQ(received, 1);
  (void)signal(SIGINT, SIG_DFL);
}

TEST_F(Tools, ProbeAsksCurl) {
  add("curl");
  EXPECT_EQ(probe_hub(65535), ToolEnd::success);
  EXPECT_EQ(said("curl"), "-s|-m|2|-o|/dev/null|http://127.0.0.1:65535/api/health|");
  EXPECT_EQ(probe_hub(0), ToolEnd::success);
  EXPECT_EQ(said("curl"), "-s|-m|2|-o|/dev/null|http://127.0.0.1:0/api/health|");
}

TEST_F(Tools, ProbeFailsAsCurlDoes) {
  add("curl", "exit 7\n");
  EXPECT_EQ(probe_hub(4466), ToolEnd::failure);
  add("curl", "kill -INT $$\n");
  EXPECT_EQ(probe_hub(4466), ToolEnd::interrupted);
}

TEST_F(Tools, ProbeWithoutCurlFails) {
  testing::internal::CaptureStderr(); // the shell's complaint
  EXPECT_EQ(probe_hub(4466), ToolEnd::failure);
  testing::internal::GetCapturedStderr();
}

TEST_F(Tools, AlertGoesToOsascriptWithItsScriptEscaped) {
  add("osascript");
  EXPECT_EQ(dialog("a \"b\" \\c\n$d `e` é"), "a \"b\" \\c\n$d `e` é\n");
  EXPECT_EQ(said("osascript"), "-e|display alert \"Tandrel\" message "
                               "\"a \\\"b\\\" \\\\c\n$d `e` é\" as critical|");
}

TEST_F(Tools, AlertWithASingleQuoteIsShownInTheTerminalOnly) {
  add("osascript");
  EXPECT_EQ(dialog("a';touch pwned;'b"), "a';touch pwned;'b\n");
  EXPECT_EQ(said("osascript"), "");
}

TEST_F(Tools, AlertWithoutAToolIsShownInTheTerminalOnly) {
  EXPECT_EQ(dialog("text"), "text\n");
}

TEST_F(Tools, AlertKeepsTheToolsOutputOffTheTerminal) {
  add("osascript", "echo noise; echo noise >&2\n");
  EXPECT_EQ(dialog("text"), "text\n");
}

TEST(AnswersOnLoopback, TellsAListenerFromNone) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr *>(&address), size), 0);
  ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr *>(&address), &size), 0);
  const std::uint16_t port = ntohs(address.sin_port);
  EXPECT_FALSE(answers_on_loopback(port)) << "bound, but not listening";
  ASSERT_EQ(listen(listener, 1), 0);
  EXPECT_TRUE(answers_on_loopback(port));
  for (int i = 0; i < 8; ++i) { // more than the backlog holds: it must not wait for room
    EXPECT_TRUE(answers_on_loopback(port));
  }
  close(listener);
  EXPECT_FALSE(answers_on_loopback(port));
  EXPECT_FALSE(answers_on_loopback(0));
}

TEST(LanIpv4, IsADottedQuad) {
  EXPECT_THAT(td_lan_ipv4(), testing::MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+\\.[0-9]+"));
}

} // namespace
