// What a quiet process is given, as /proc shows it.

#include "child.h"
#include "spawned.h"
#include "temporary_folder.h"

#include <gtest/gtest.h>

namespace {

TEST(Spawn, QuietHasDevNullForItsStreams) {
  const TemporaryFolder folder;
  // The streams are read before the script redirects anything.
  const std::string script = folder.write(
      "ask", "#!/bin/sh\nfor d in 0 1 2; do [ /proc/$$/fd/$d -ef /dev/null ] || exit 9; done\n",
      true);
  Child quiet = make(script);
  quiet.quiet = true;
  EXPECT_EQ(status_of(std::move(quiet)), 0);
}

} // namespace
