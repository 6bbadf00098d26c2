/// Scripts in place of the outside tools that the launcher runs.
#pragma once

#include "temporary_folder.h"

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

/// Has only the tools on the PATH that the test adds.
struct FakeTools : testing::Test {
  TemporaryFolder folder;
  std::string path_before = std::getenv("PATH");

  void SetUp() override { setenv("PATH", folder.path.c_str(), 1); }
  void TearDown() override { setenv("PATH", path_before.c_str(), 1); }

  /// Adds a tool that writes its arguments, each ended by "|", and then runs the script `then`.
  void add(const std::string &name, const std::string &then = "") const {
    (void)folder.write(
        name, "#!/bin/sh\nprintf '%s|' \"$@\" > " + folder.prefix() + name + ".output\n" + then,
        true);
  }
  /// What the tool has written; empty if it did not run.
  [[nodiscard]] std::string output_of(const std::string &name) const {
    return folder.read(name + ".output");
  }
};
