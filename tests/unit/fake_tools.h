/// Programs that stand in for the outside tools of the launcher.
#pragma once

#include "temporary_folder.h"

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

/// Leaves only the tools that a test adds on the PATH.
struct FakeTools : testing::Test {
  TemporaryFolder folder;
  std::string path_before = std::getenv("PATH");

  void SetUp() override { setenv("PATH", folder.path.c_str(), 1); }
  void TearDown() override { setenv("PATH", path_before.c_str(), 1); }

  /// Adds a tool that writes its arguments, each ended by "|", and then runs the script `then`.
  void add(const std::string &name, const std::string &then = "") const {
    (void)folder.write(
        name, "#!/bin/sh\nprintf '%s|' \"$@\" > " + folder.prefix() + name + ".said\n" + then,
        true);
  }
  /// What the tool has written; empty when it did not run.
  [[nodiscard]] std::string said(const std::string &name) const {
    return folder.read(name + ".said");
  }
};
