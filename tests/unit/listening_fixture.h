/// A process for tests of only_others_listen().
#pragma once

#include "child.h"
#include "end_of_test.h"
#include "temporary_folder.h"

#include <array>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

/// A process that runs until the test is over, as does what it starts, if that waits with
/// `wait_command`.
struct OnlyOthersListen : testing::Test {
  TemporaryFolder folder;
  EndOfTest end_of_test{folder.prefix() + "end"};
  std::string wait_command = end_of_test.wait_command();
  /// Lines of a script that give its standard input to an orphan, which has a session of its own if
  /// `start` is "setsid".
  [[nodiscard]] std::string leave_orphan(const std::string &start = "") const {
    return "exec 3<&0 </dev/null\n( " + start + " " + wait_command +
           " <&3 >/dev/null 3<&- & )\nexec 3<&-\n";
  }
  Child child;
  Child other;

  void TearDown() override {
    stop(child);
    stop(other);
  }

  /// Starts a shell, which inherits standard input, and waits until its script has printed a line.
  void start(const std::string &script) { start(child, script); }
  static void start(Child &child, const std::string &script) {
    std::array<int, 2> ready{};
    ASSERT_EQ(pipe(ready.data()), 0);
    const int output = dup(STDOUT_FILENO);
    dup2(ready[1], STDOUT_FILENO);
    close(ready[1]);
    child.path = "/bin/sh";
    child.args = {"-c", script};
    const bool spawned = spawn(child);
    dup2(output, STDOUT_FILENO);
    close(output);
    ASSERT_TRUE(spawned);
    char byte = 0;
    EXPECT_EQ(read(ready[0], &byte, 1), 1);
    close(ready[0]);
  }
};
