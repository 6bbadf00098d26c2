/// Records for tests of spawn().
#pragma once

#include "child.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

inline Child make(const std::string &path, std::vector<std::string> args = {}) {
  Child child;
  child.name = "test";
  child.path = path;
  child.args = std::move(args);
  return child;
}

inline Child shell(const std::string &script) {
  return make("/bin/sh", {"-c", script});
}

inline int status_of(Child child, SpawnMode mode = SpawnMode::separate) {
  EXPECT_TRUE(spawn(child, mode));
  return wait_for_exit(child).value_or(-1);
}
