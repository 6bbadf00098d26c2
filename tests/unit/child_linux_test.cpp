// What the new process is given, as /proc shows it.

#include "child.h"
#include "spawned.h"
#include "temporary_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

TEST(Spawn, QuietHasASessionOfItsOwnOnDevNull) {
  const TemporaryFolder folder;
  // The terminal streams are asked about before the script redirects anything.
  const std::string script = folder.write(
      "ask",
      "#!/bin/sh\nfor d in 0 1 2; do [ /proc/$$/fd/$d -ef /dev/null ] || exit 9; done\n"
      "read -r _ _ _ _ group session _ < /proc/$$/stat\n"
      "[ $group = $$ ] && [ $session = $$ ]\n",
      true);
  Child quiet = make(script);
  quiet.quiet = true;
  EXPECT_EQ(status_of(std::move(quiet)), 0);
}

TEST(Spawn, OtherwiseSharesGroupAndSession) {
  EXPECT_EQ(status_of(shell("read -r _ _ _ _ group session _ < /proc/$$/stat; [ $group = " +
                            std::to_string(getpgrp()) +
                            " ] && [ $session = " + std::to_string(getsid(0)) + " ]")),
            0);
}

TEST(Spawn, PassesDescriptorsOnlyWhenAsked) {
  const int descriptor = open("/dev/null", O_RDONLY); // deliberately without O_CLOEXEC
  ASSERT_GE(descriptor, 3);
  const std::string look = "[ -e /proc/$$/fd/" + std::to_string(descriptor) + " ]";
  EXPECT_NE(status_of(shell(look)), 0);
  EXPECT_EQ(status_of(shell(look), SpawnMode::pass_through), 0);
  close(descriptor);
}

} // namespace
