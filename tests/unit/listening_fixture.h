/// A process for tests of certainly_not_listening().
#pragma once

#include "child.h"
#include "temporary_folder.h"

#include <array>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

/// A process that runs until the test is over. So does what it starts, if it waits with
/// `wait_command`.
struct Listening : testing::Test {
  TemporaryFolder folder;
  std::string fifo = folder.prefix() + "fifo";
  int end_of_test = mkfifo(fifo.c_str(), 0600) == 0 ? open(fifo.c_str(), O_RDWR | O_CLOEXEC) : -1;
  std::string wait_command = "cat " + fifo; // ends when nobody can write to it any more
  Child child;

  void TearDown() override {
    stop(child);
    close(end_of_test);
  }

  /// Starts a shell, which has what is standard input here, and waits until its script has said so.
  void start(const std::string &script) {
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
