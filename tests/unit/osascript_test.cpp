#include "osascript.h"

#include <gtest/gtest.h>

namespace {

TEST(OsascriptCommand, IsOneShellCommandLine) {
  EXPECT_EQ(osascript_command("x\\\"\n"),
            "osascript -e 'display alert \"Tandrel\" message \"x\\\\\\\"\n\" as critical' "
            ">/dev/null 2>&1");
}

} // namespace
