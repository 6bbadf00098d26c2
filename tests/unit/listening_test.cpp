#include "child.h"
#include "listener.h"
#include "listening.h"
#include "temporary_folder.h"

#include <array>
#include <csignal>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

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

TEST_F(Listening, IsSeenInTheProcessItself) {
  const Listener listener;
  EXPECT_FALSE(certainly_not_listening(getpid(), listener.port()));
}

TEST_F(Listening, IsRuledOutForAProcessWithoutTheSocket) {
  const Listener listener;
  const StandardInput input(listener.descriptor());
  start("exec < /dev/null; echo; exec " + wait_command);
  EXPECT_TRUE(certainly_not_listening(child.pid, listener.port()));
}

TEST_F(Listening, IsNotRuledOutWhenNobodyIsSeenToListen) {
  const Listener bound(false);
  EXPECT_FALSE(certainly_not_listening(getpid(), bound.port()));
}

TEST_F(Listening, IsRuledOutForAProcessThatListensOnAnotherPort) {
  const Listener listener;
  const Listener other;
  const StandardInput input(other.descriptor());
  start("echo; exec " + wait_command);
  EXPECT_TRUE(certainly_not_listening(child.pid, listener.port()));
}

TEST_F(Listening, IsSeenInAGrandchild) {
  const Listener listener;
  const StandardInput input(listener.descriptor());
  start("exec 3<&0 </dev/null\n"
        "( " +
        wait_command +
        " <&3 >/dev/null 3<&- & exec 3<&-; wait ) &\n"
        "exec 3<&-; echo; wait");
  EXPECT_FALSE(certainly_not_listening(child.pid, listener.port()));
}

TEST_F(Listening, IsSeenInADescendantWhoseParentHasEnded) {
  const Listener listener;
  const StandardInput input(listener.descriptor());
  // In a session of its own, as a component is.
  const std::string script = folder.write("script", "exec 3<&0 </dev/null\n"
                                                    "( " +
                                                        wait_command +
                                                        " <&3 >/dev/null 3<&- & )\n"
                                                        "exec 3<&-; echo; exec " +
                                                        wait_command);
  start("exec setsid sh " + script);
  EXPECT_FALSE(certainly_not_listening(child.pid, listener.port()));
}

TEST_F(Listening, IsSeenOnBothProtocolsAtOnce) {
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
  EXPECT_FALSE(certainly_not_listening(getpid(), ntohs(address.sin6_port)));
  close(socket6);
}

TEST_F(Listening, IsSeenInOneOfSeveralProgramsThatShareThePort) {
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
  EXPECT_FALSE(certainly_not_listening(child.pid, ntohs(address.sin_port)));
  close(sockets[0]);
}

TEST_F(Listening, IsNotRuledOutForAProcessThatHasEnded) {
  const Listener listener;
  const StandardInput input(listener.descriptor());
  start("echo");
  siginfo_t info{};
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child.pid), &info, WEXITED | WNOWAIT), 0);
  EXPECT_FALSE(certainly_not_listening(child.pid, listener.port()));
  const pid_t pid = child.pid;
  EXPECT_TRUE(reap(child));
  EXPECT_FALSE(certainly_not_listening(pid, listener.port()));
}

TEST_F(Listening, IsNotRuledOutForAProcessThatCannotBeExamined) {
  const Listener listener;
  const pid_t parent = getpid();
  const pid_t asker = fork();
  if (asker == 0) { // the first process of the system is another user's, or root asks as nobody
    const bool root = getuid() == 0;
    const bool prepared = !root || setuid(65534) == 0;
    _exit(prepared && !certainly_not_listening(root ? parent : 1, listener.port()) ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(asker, &status, 0), asker);
  EXPECT_EQ(status, 0);
}

} // namespace
