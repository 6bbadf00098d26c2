#include "fake_tools.h"
#include "special_messages.h"
#include "tools.h"

#include <array>
#include <csignal>

#include <gmock/gmock.h>

namespace {

constexpr std::array messages_with_a_single_quote = {
    "a';touch pwned;'b", "'", "it's", "'$(touch pwned)'", "'\\''; touch pwned; '",
};

struct Alert : FakeTools {
  static std::string dialog(const std::string &message) {
    testing::internal::CaptureStderr();
    fatal_dialog(message);
    return testing::internal::GetCapturedStderr();
  }
};

TEST(RunTool, ReturnsWhetherTheCommandSucceeded) {
  EXPECT_TRUE(run_tool("true"));
  EXPECT_FALSE(run_tool("exit 3"));
  EXPECT_FALSE(run_tool("kill -TERM $$"));
  EXPECT_FALSE(run_tool("kill -INT $$"));
  EXPECT_FALSE(run_tool("exit 130"));
  EXPECT_FALSE(run_tool("no-such-command 2>/dev/null"));
}

TEST(RunTool, FailsWhenTheCommandCannotBeWaitedFor) {
  (void)signal(SIGCHLD, SIG_IGN); // the kernel then reaps it
  EXPECT_FALSE(run_tool("true"));
  (void)signal(SIGCHLD, SIG_DFL);
}

TEST(RunTool, AddsAVariableForThisCommandOnly) {
  EXPECT_TRUE(run_tool("[ \"$no_proxy\" = 'a b' ]", {"no_proxy=a b"}));
  EXPECT_TRUE(run_tool("[ -z \"$no_proxy\" ]"));
  EXPECT_FALSE(run_tool("exit 3", {"no_proxy=x"}));
}

TEST(RunTool, DoesNotKeepASigintFromTheCaller) {
  static volatile std::sig_atomic_t received = 0;
  (void)signal(SIGINT, [](int) { received = 1; });
  EXPECT_TRUE(run_tool("kill -INT " + std::to_string(getpid())));
  EXPECT_EQ(received, 1);
  (void)signal(SIGINT, SIG_DFL);
}

TEST_F(Alert, GoesToOsascriptWithItsScriptEscaped) {
  add("osascript");
  EXPECT_EQ(dialog("a \"b\" \\c\n$d `e` é"), "a \"b\" \\c\n$d `e` é\n");
  EXPECT_EQ(output_of("osascript"), "-e|display alert \"Tandrel\" message "
                                    "\"a \\\"b\\\" \\\\c\n$d `e` é\" as critical|");
}

TEST_F(Alert, GetsSpecialCharactersUnchanged) {
  add("osascript");
  add("touch");
  for (const std::string message : special_messages) {
    std::string escaped;
    for (const char c : message) {
      escaped += c == '"' || c == '\\' ? std::string{'\\', c} : std::string{c};
    }
    EXPECT_EQ(dialog(message), message + "\n");
    EXPECT_EQ(output_of("osascript"),
              "-e|display alert \"Tandrel\" message \"" + escaped + "\" as critical|");
  }
  EXPECT_EQ(output_of("touch"), "") << "a command in a message was run";
}

TEST_F(Alert, WithASingleQuoteIsShownInTheTerminalOnly) {
  for (const char *tool : {"xmessage", "kdialog", "zenity", "osascript"}) {
    add(tool);
    add("touch");
    for (const std::string message : messages_with_a_single_quote) {
      EXPECT_EQ(dialog(message), message + "\n");
    }
    EXPECT_EQ(output_of(tool), "");
    EXPECT_EQ(output_of("touch"), "") << "a command in a message was run";
  }
}

TEST_F(Alert, WithoutAToolIsShownInTheTerminalOnly) {
  EXPECT_EQ(dialog("text"), "text\n");
}

TEST_F(Alert, KeepsTheToolsOutputOffTheTerminal) {
  add("osascript", "echo noise; echo noise >&2\n");
  EXPECT_EQ(dialog("text"), "text\n");
}

} // namespace
