#include "listener.h"
#include "listening.h"
#include "listening_fixture.h"

#include <array>
#include <csignal>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

TEST_F(OnlyOthersListen, NotWhenTheProcessItselfDoes) {
  const Listener listener;
  EXPECT_FALSE(only_others_listen(getpid(), listener.port()));
}

TEST_F(OnlyOthersListen, WhenTheProcessDoesNotHaveTheSocket) {
  const Listener listener;
  const StandardInput input(listener.descriptor());
  start("exec < /dev/null; echo; exec " + wait_command);
  EXPECT_TRUE(only_others_listen(child.pid, listener.port()));
}

TEST_F(OnlyOthersListen, WhenTheProcessListensOnAnotherPort) {
  const Listener listener;
  const Listener other;
  const StandardInput input(other.descriptor());
  start("echo; exec " + wait_command);
  EXPECT_TRUE(only_others_listen(child.pid, listener.port()));
}

TEST_F(OnlyOthersListen, NotWhenAGrandchildDoes) {
  const Listener listener;
  const StandardInput input(listener.descriptor());
  start("exec 3<&0 </dev/null\n"
        "( " +
        wait_command +
        " <&3 >/dev/null 3<&- & exec 3<&-; wait ) &\n"
        "exec 3<&-; echo; wait");
  EXPECT_FALSE(only_others_listen(child.pid, listener.port()));
}

TEST_F(OnlyOthersListen, NotWhenAnOrphanedDescendantDoes) {
  const Listener listener;
  const StandardInput input(listener.descriptor());
  start(leave_orphan() + "echo; exec " + wait_command);
  EXPECT_FALSE(only_others_listen(child.pid, listener.port()));
}

TEST_F(OnlyOthersListen, WhenAnOrphanDoesThatIsOlderThanTheProcess) {
  const Listener listener;
  {
    const StandardInput input(listener.descriptor());
    start(other, leave_orphan() + "echo; exec " + wait_command);
  }
  bool known = false;
  // The system counts time in ticks: the first ones may have the same age as the orphan.
  for (int i = 0; i < 1000 && !known; ++i) {
    stop(child);
    start("exec < /dev/null; echo; exec " + wait_command);
    known = only_others_listen(child.pid, listener.port());
  }
  EXPECT_TRUE(known);
}

TEST_F(OnlyOthersListen, NotWhenTheProcessListensOnBothProtocols) {
  const int socket6 = socket(AF_INET6, SOCK_STREAM, 0);
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  address.sin6_addr = in6addr_any;
  socklen_t size = sizeof address;
  const int both = 0;
  setsockopt(socket6, IPPROTO_IPV6, IPV6_V6ONLY, &both, sizeof both);
  if (socket6 < 0 || bind(socket6, reinterpret_cast<sockaddr *>(&address), size) != 0) {
    GTEST_SKIP() << "no IPv6 here";
  }
  ASSERT_EQ(listen(socket6, 1), 0);
  ASSERT_EQ(getsockname(socket6, reinterpret_cast<sockaddr *>(&address), &size), 0);
  EXPECT_FALSE(only_others_listen(getpid(), ntohs(address.sin6_port)));
  close(socket6);
}

TEST_F(OnlyOthersListen, NotWhenTheProcessSharesThePort) {
  std::array<int, 2> sockets{};
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  for (int &descriptor : sockets) {
    const int yes = 1;
    descriptor = socket(AF_INET, SOCK_STREAM, 0);
    setsockopt(descriptor, SOL_SOCKET, SO_REUSEPORT, &yes, sizeof yes);
    ASSERT_EQ(bind(descriptor, reinterpret_cast<sockaddr *>(&address), size), 0);
    ASSERT_EQ(getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &size), 0);
    ASSERT_EQ(listen(descriptor, 1), 0);
  }
  {
    const StandardInput input(sockets[1]);
    start("echo; exec " + wait_command);
  }
  close(sockets[1]);
  EXPECT_FALSE(only_others_listen(child.pid, ntohs(address.sin_port)));
  close(sockets[0]);
}

TEST_F(OnlyOthersListen, IsUnknownOnceTheProcessHasEnded) {
  const Listener listener;
  const StandardInput input(listener.descriptor());
  start("echo");
  siginfo_t info{};
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child.pid), &info, WEXITED | WNOWAIT), 0);
  EXPECT_FALSE(only_others_listen(child.pid, listener.port()));
  const pid_t pid = child.pid;
  EXPECT_TRUE(reap(child));
  EXPECT_FALSE(only_others_listen(pid, listener.port()));
}

TEST_F(OnlyOthersListen, IsUnknownWhenTheProcessCannotBeExamined) {
  const Listener listener;
  const pid_t parent = getpid();
  const pid_t asker = fork();
  if (asker ==
      0) { // about the system's first process, which is another user's; root asks as nobody
    const bool root = getuid() == 0;
    const bool prepared = !root || setuid(65534) == 0;
    _exit(prepared && !only_others_listen(root ? parent : 1, listener.port()) ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(asker, &status, 0), asker);
  EXPECT_EQ(status, 0);
}

} // namespace
