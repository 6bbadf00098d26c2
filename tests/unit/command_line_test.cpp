#include "command_line.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace {

using Arguments = std::vector<const char *>;

Mode mode_of(Arguments arguments) {
  arguments.insert(arguments.begin(), "launcher");
  return choose_mode(static_cast<int>(arguments.size()), arguments.data());
}

struct Parsed {
  Options options{Settings{}};
  std::string unknown;
};

Parsed parse(Arguments arguments, const Settings &saved = {}) {
  arguments.insert(arguments.begin(), "launcher");
  Parsed parsed{Options(saved), ""};
  const char *unknown =
      parse_options(static_cast<int>(arguments.size()), arguments.data(), parsed.options);
  parsed.unknown = unknown == nullptr ? "" : unknown;
  return parsed;
}

TEST(ChooseMode, IsDecidedByTheWholeFirstArgument) {
  EXPECT_EQ(mode_of({}), Mode::all_in_one);
  EXPECT_EQ(mode_of({"-h"}), Mode::help);
  EXPECT_EQ(mode_of({"--help"}), Mode::help);
  for (const char *word : {"hub", "sender", "receiver", "align"}) {
    EXPECT_EQ(mode_of({word, "--help"}), Mode::pass_through) << word;
  }
  for (const char *word : {"", "HUB", "Hub", "hub ", "td_hub", "hu", "--hub", "-help", "help"}) {
    EXPECT_EQ(mode_of({word}), Mode::all_in_one) << word;
  }
  EXPECT_EQ(mode_of({"--no-sender", "--help"}), Mode::all_in_one);
}

TEST(ParseOptions, StartFromTheSavedSettings) {
  const Parsed parsed = parse({}, {{5000, 4000}, false});
  EXPECT_EQ(parsed.unknown, "");
  EXPECT_EQ(parsed.options.ports.http, 5000);
  EXPECT_EQ(parsed.options.ports.udp, 4000);
  EXPECT_FALSE(parsed.options.open_browser);
  EXPECT_FALSE(parsed.options.verbose);
  EXPECT_TRUE(parsed.options.run_sender);
  EXPECT_TRUE(parsed.options.run_receiver);
}

TEST(ParseOptions, SwitchesSetTheirValues) {
  EXPECT_FALSE(parse({"--no-sender"}).options.run_sender);
  EXPECT_TRUE(parse({"--no-sender"}).options.run_receiver);
  EXPECT_FALSE(parse({"--no-receiver"}).options.run_receiver);
  EXPECT_TRUE(parse({"--no-receiver"}).options.run_sender);
  EXPECT_TRUE(parse({"--browser"}, {{1, 2}, false}).options.open_browser);
  EXPECT_FALSE(parse({"--no-browser"}).options.open_browser);
  EXPECT_TRUE(parse({"--verbose"}).options.verbose);
}

TEST(ParseOptions, TheLastOneCounts) {
  EXPECT_TRUE(parse({"--no-browser", "--browser"}).options.open_browser);
  EXPECT_FALSE(parse({"--browser", "--no-browser"}).options.open_browser);
  EXPECT_EQ(parse({"--http-port", "1", "--http-port", "2"}).options.ports.http, 2);
}

TEST(ParseOptions, PortsAreCutTo16BitsAndNotChecked) {
  EXPECT_EQ(parse({"--http-port", "5000"}).options.ports.http, 5000);
  EXPECT_EQ(parse({"--udp-port", "70000"}).options.ports.udp, 4464);
  EXPECT_EQ(parse({"--http-port", "-1"}).options.ports.http, 65535);
  EXPECT_EQ(parse({"--http-port", "65536"}).options.ports.http, 0);
  EXPECT_EQ(parse({"--http-port", "word"}).options.ports.http, 0);
  EXPECT_EQ(parse({"--udp-port", ""}).options.ports.udp, 0);
}

TEST(ParseOptions, ThePortsArgumentIsAlwaysItsValue) {
  const Parsed parsed = parse({"--http-port", "--verbose"});
  EXPECT_EQ(parsed.unknown, "");
  EXPECT_EQ(parsed.options.ports.http, 0);
  EXPECT_FALSE(parsed.options.verbose);
}

TEST(ParseOptions, RefusesTheFirstArgumentThatIsNoOption) {
  for (const char *argument :
       {"-h", "--help", "hub", "--http-port=1", "--HTTP-PORT", "", "--", "--no-sender ", "4466"}) {
    EXPECT_EQ(parse({"--verbose", argument, "--other"}).unknown, argument);
  }
  EXPECT_EQ(parse({"--http-port"}).unknown, "--http-port");
  EXPECT_EQ(parse({"--verbose", "--udp-port"}).unknown, "--udp-port");
  EXPECT_EQ(parse({"--http-port"}).options.ports.http, Ports{}.http);
}

} // namespace
