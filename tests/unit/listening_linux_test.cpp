// These tests use setsid and setpriv of util-linux.

#include "listener.h"
#include "listening.h"
#include "listening_fixture.h"
#include "own_process.h"

#include <filesystem>

#include <sys/prctl.h>
#include <sys/stat.h>

namespace {

/// The id of a user that no other copy of these tests takes: an orphan of the same user could be a
/// descendant of any hub of that user.
uid_t other_user() {
  return 20000 + static_cast<uid_t>(getpid()) % 40000;
}

TEST_F(OnlyOthersListen, IsUnknownWithoutAVisibleListener) {
  const Listener bound(false);
  EXPECT_FALSE(only_others_listen(getpid(), bound.port()));
}

TEST_F(OnlyOthersListen, NotWhenAnOrphanedDescendantDoesWhoeverAdoptedIt) {
  for (const unsigned long adopts : {0UL, 1UL}) {
    ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, adopts), 0);
    for (const std::string orphans_session : {"", "setsid"}) {
      for (const std::string hubs_session : {"", "exec setsid "}) {
        const Listener listener;
        const StandardInput input(listener.descriptor());
        const std::string hub =
            folder.write("hub", leave_orphan(orphans_session) + "echo $$ > " + folder.prefix() +
                                    "pid; echo; exec " + wait_command);
        start("exec 3<&0; ( " + hubs_session + "sh " + hub + " <&3 3<&- ) & exec 3<&-; wait");
        EXPECT_FALSE(only_others_listen(std::stoi(folder.read("pid")), listener.port()))
            << adopts << orphans_session << hubs_session;
        stop(child);
      }
    }
  }
}

TEST_F(OnlyOthersListen, WhenAYoungerHubOfAnotherCopyDoes) {
  const Listener listener;
  const StandardInput input(listener.descriptor());
  start("exec < /dev/null; exec setsid sh -c 'echo; exec " + wait_command + "'");
  const std::string hub = folder.write("hub", "echo; exec " + wait_command);
  start(other, "exec 3<&0 </dev/null; setsid sh " + hub + " <&3 3<&- & exec 3<&-; wait");
  EXPECT_TRUE(only_others_listen(child.pid, listener.port()));
}

TEST_F(OnlyOthersListen, WhenAnotherUsersOrphanDoes) {
  if (getuid() != 0) {
    GTEST_SKIP() << "only root can start processes of two users";
  }
  const Listener listener;
  const StandardInput input(listener.descriptor());
  ASSERT_EQ(chmod(folder.path.c_str(), 0755) + chmod((folder.prefix() + "end").c_str(), 0644), 0);
  const uid_t user = other_user();
  start("exec < /dev/null; exec setpriv --reuid " + std::to_string(user) + " sh -c 'echo; exec " +
        wait_command + "'");
  start(other, leave_orphan("setsid") + "echo; exec " + wait_command);
  EXPECT_TRUE(holds_in_a_process_of_its_own([&] {
    close(listener.descriptor());
    close(STDIN_FILENO);
    return setuid(user) == 0 && only_others_listen(child.pid, listener.port());
  }));
}

TEST_F(OnlyOthersListen, IsUnknownWhenAnOrphanHasMoreRightsThanItsUser) {
  if (getuid() != 0) {
    GTEST_SKIP() << "only root can start processes of two users";
  }
  const Listener listener;
  const StandardInput input(listener.descriptor());
  const std::string waiting = folder.prefix() + "cat", end = folder.prefix() + "end";
  std::filesystem::copy_file("/bin/cat", waiting);
  ASSERT_EQ(chmod(folder.path.c_str(), 0755) + chmod(end.c_str(), 0644), 0);
  ASSERT_EQ(chmod(waiting.c_str(), S_ISUID | 0755), 0);
  const std::string hub = folder.write("hub", "exec 3<&0 </dev/null; ( setsid " + waiting + " " +
                                                  end + " <&3 >/dev/null 3<&- & )\n" +
                                                  "exec 3<&-; echo; exec " + wait_command);
  const uid_t user = other_user();
  start("exec setpriv --reuid " + std::to_string(user) + " sh " + hub);
  EXPECT_TRUE(holds_in_a_process_of_its_own([&] {
    close(listener.descriptor());
    close(STDIN_FILENO);
    return setuid(user) == 0 && !only_others_listen(child.pid, listener.port());
  }));
}

TEST_F(OnlyOthersListen, WhenAnAncestorAsYoungAsTheProcessDoes) {
  for (int i = 0; i < 20; ++i) {
    EXPECT_TRUE(holds_in_a_process_of_its_own([] {
      const Listener listener;
      return holds_in_a_process_of_its_own([&] {
        close(listener.descriptor());
        return only_others_listen(getpid(), listener.port());
      });
    }));
  }
}

} // namespace
