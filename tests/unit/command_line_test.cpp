#include "command_line.h"

#include <string>
#include <utility>
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

/// The two ports of a command line.
std::pair<int, int> ports_of(const Arguments &arguments) {
  const Options options = parse(arguments).options;
  return {options.ports.http, options.ports.udp};
}

/// First arguments that are neither an option nor a component's name.
constexpr const char *not_options[] = {"HUB",
                                       "Hub",
                                       "SENDER",
                                       "Sender",
                                       "RECEIVER",
                                       "Receiver",
                                       "ALIGN",
                                       "Align",
                                       "hub ",
                                       "td_hub",
                                       "hu",
                                       "--hub",
                                       "help",
                                       "-H",
                                       "--Help",
                                       "--HELP",
                                       "-help",
                                       "--no-senders",
                                       "--no-sende",
                                       "--No-Sender",
                                       "--no-sender ",
                                       "no-sender",
                                       "--http-port=5000",
                                       "--udp-port=5000",
                                       "--HTTP-PORT",
                                       "--verbose=yes",
                                       "5000",
                                       "",
                                       "--",
                                       "--first",
                                       "%s%n%d",
                                       "it's \"quoted\"\n$(touch x)",
                                       "--naïve",
                                       "\xff\xfe"};

TEST(ChooseMode, IsDecidedByTheWholeFirstArgument) {
  EXPECT_EQ(mode_of({}), Mode::all_in_one);
  EXPECT_EQ(mode_of({"-h"}), Mode::help);
  EXPECT_EQ(mode_of({"--help"}), Mode::help);
  for (const char *word : {"hub", "sender", "receiver", "align"}) {
    EXPECT_EQ(mode_of({word, "--help"}), Mode::pass_through) << word;
  }
  EXPECT_EQ(mode_of({"-h", "--bogus"}), Mode::help);
  EXPECT_EQ(mode_of({"--help", "hub"}), Mode::help);
  for (const char *word : not_options) {
    EXPECT_EQ(mode_of({word}), Mode::all_in_one) << word;
  }
  for (const char *second : {"-h", "--help", "hub", "align"}) {
    EXPECT_EQ(mode_of({"--no-sender", second}), Mode::all_in_one) << second;
  }
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
  EXPECT_TRUE(parse({}).options.open_browser);
  EXPECT_EQ(ports_of({}), std::pair(4466, 4465));
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
  EXPECT_FALSE(parse({"--browser", "--browser", "--no-browser"}).options.open_browser);
  const Arguments four = {"--browser", "--browser", "--no-browser", "--browser"};
  EXPECT_TRUE(parse(four, {{1, 2}, false}).options.open_browser);
  EXPECT_EQ(ports_of({"--http-port", "1", "--http-port", "2"}), std::pair(2, 4465));
  EXPECT_EQ(ports_of({"--udp-port", "5000", "--udp-port", "x", "--udp-port", "5002"}),
            std::pair(4466, 5002));
}

TEST(ParseOptions, EachPortHasItsOption) {
  EXPECT_EQ(ports_of({"--http-port", "5000"}), std::pair(5000, 4465));
  EXPECT_EQ(ports_of({"--udp-port", "5000"}), std::pair(4466, 5000));
  EXPECT_EQ(ports_of({"--http-port", "1", "--udp-port", "65535"}), std::pair(1, 65535));
  EXPECT_EQ(ports_of({"--udp-port", "5000", "--http-port", "5000"}), std::pair(5000, 5000));
}

TEST(ParseOptions, PortsAreReadAsTheCLibraryDoesAndCutTo16Bits) {
  const std::pair<const char *, int> values[] = {
      {"dashboard", 0}, {"", 0},           {"0", 0},      {"65535", 65535},
      {"65536", 0},     {"70000", 4464},   {"-1", 65535}, {"-65537", 65535},
      {" \t+0080", 80}, {"5000abc", 5000}, {"0x50", 0},   {"- 5", 0},
  };
  for (const auto &[text, port] : values) {
    EXPECT_EQ(ports_of({"--http-port", text}), std::pair(port, 4465)) << text;
    EXPECT_EQ(ports_of({"--udp-port", text}), std::pair(4466, port)) << text;
  }
}

TEST(ParseOptions, ThePortsArgumentIsAlwaysItsValue) {
  const Parsed parsed = parse({"--http-port", "--verbose", "--udp-port", "--no-sender"});
  EXPECT_EQ(parsed.unknown, "");
  EXPECT_FALSE(parsed.options.verbose);
  EXPECT_TRUE(parsed.options.run_sender);
  EXPECT_EQ(ports_of({"--http-port", "--verbose"}), std::pair(0, 4465));
  EXPECT_EQ(ports_of({"--http-port", "--udp-port"}), std::pair(0, 4465));
  EXPECT_EQ(ports_of({"--udp-port", "--help"}), std::pair(4466, 0));
  EXPECT_EQ(ports_of({"--udp-port", "hub", "--http-port", "-h"}), std::pair(0, 0));
}

TEST(ParseOptions, RefusesTheFirstArgumentThatIsNoOption) {
  for (const char *argument : not_options) {
    EXPECT_EQ(parse({argument, "--other"}).unknown, argument);
    EXPECT_EQ(parse({"--verbose", argument, "--other"}).unknown, argument);
  }
  for (const char *argument : {"-h", "--help", "hub", "align"}) {
    EXPECT_EQ(parse({"--no-sender", argument, "--other"}).unknown, argument);
  }
  EXPECT_EQ(parse({"--http-port", "5000", "5001"}).unknown, "5001");
}

TEST(ParseOptions, RefusesAPortOptionWithoutAValue) {
  EXPECT_EQ(parse({"--http-port"}).unknown, "--http-port");
  EXPECT_EQ(parse({"--udp-port"}).unknown, "--udp-port");
  EXPECT_EQ(parse({"--no-sender", "--udp-port"}).unknown, "--udp-port");
  EXPECT_EQ(parse({"--http-port", "--http-port", "--http-port"}).unknown, "--http-port");
  EXPECT_EQ(parse({"--http-port"}).options.ports.http, Ports{}.http);
}

} // namespace
