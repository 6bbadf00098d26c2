#include "suite.h"
#include "temporary_folder.h"

#include <csignal>
#include <string>

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace {

using testing::ElementsAre;

TEST(MakeChildren, GivesTheThreeRecordsInStartOrder) {
  Options options{Settings{{5000, 4000}, true}};
  options.run_receiver = false;
  const Children children = make_children("/opt/tools/", options);
  ASSERT_EQ(children.size(), 3U);
  EXPECT_EQ(children[0].name, "hub");
  EXPECT_EQ(children[0].path, "/opt/tools/td_hub");
  EXPECT_THAT(children[0].args, ElementsAre("--udp-port", "4000", "--http-port", "5000"));
  EXPECT_TRUE(children[0].critical && children[0].supervised && children[0].quiet);
  EXPECT_EQ(children[1].name, "receiver");
  EXPECT_EQ(children[1].path, "/opt/tools/td_receiver");
  EXPECT_THAT(children[1].args, ElementsAre("--hub", "127.0.0.1:4000"));
  EXPECT_FALSE(children[1].critical || children[1].supervised);
  EXPECT_EQ(children[2].name, "sender");
  EXPECT_EQ(children[2].path, "/opt/tools/td_sender");
  EXPECT_THAT(children[2].args, ElementsAre("--hub", "127.0.0.1:4000"));
  EXPECT_FALSE(children[2].critical);
  EXPECT_TRUE(children[2].supervised && children[2].quiet);
  for (const Child &child : children) {
    EXPECT_EQ(child.pid, -1);
    EXPECT_EQ(child.restarts, 0);
  }
}

TEST(MakeChildren, OnlyWhatIsNotQuietSharesTheTerminal) {
  Options options{Settings{}};
  SharedTerminal terminal;
  for (const bool verbose : {false, true}) {
    options.verbose = verbose;
    for (const Child &child : make_children("/", options, &terminal)) {
      EXPECT_EQ(child.quiet, !verbose);
      EXPECT_EQ(child.terminal, verbose ? &terminal : nullptr);
    }
  }
}

TEST(FindByName, TakesTheWholeName) {
  Children none;
  EXPECT_EQ(find_by_name(none, "hub"), nullptr);
  Children children = make_children("/", Options{Settings{}});
  EXPECT_EQ(find_by_name(children, "sender"), &children[2]);
  using std::string_literals::operator""s;
  for (const std::string &name : {""s, "Hub"s, "hu"s, "hub "s, "hub\0"s}) {
    EXPECT_EQ(find_by_name(children, name), nullptr) << name;
  }
}

TEST(SetPortArguments, ReplacesArgumentsAndRestarts) {
  Children children = make_children("/", Options{Settings{}});
  children[2].restarts = 1000;
  set_port_arguments(children, {5000, 4000});
  EXPECT_THAT(children[0].args, ElementsAre("--udp-port", "4000", "--http-port", "5000"));
  EXPECT_THAT(children[1].args, ElementsAre("--hub", "127.0.0.1:4000"));
  EXPECT_THAT(children[2].args, ElementsAre("--hub", "127.0.0.1:4000"));
  EXPECT_EQ(children[2].restarts, 0);
}

// The system tests check the order, by the components' own event logs.
TEST(StopLastToFirst, EndsEveryRecord) {
  const TemporaryFolder folder;
  Children children = make_children(folder.prefix(), Options{Settings{}});
  for (Child &child : children) {
    (void)folder.write(child.path.substr(folder.prefix().size()), "#!/bin/sh\nexec sleep 1000\n",
                       true);
  }
  ASSERT_TRUE(spawn(children[0]) && spawn(children[2])); // the receiver is idle
  const std::vector<pid_t> pids = {children[0].pid, children[2].pid};
  stop_last_to_first(children);
  for (const Child &child : children) {
    EXPECT_EQ(child.pid, -1);
  }
  for (const pid_t pid : pids) {
    EXPECT_EQ(kill(pid, 0), -1) << "still there";
  }
}

} // namespace
