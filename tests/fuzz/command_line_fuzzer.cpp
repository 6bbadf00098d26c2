/// The input is the arguments after the program's name, with a NUL between two.
#include "command_line.h"
#include "fuzzer.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace {

using Words = std::vector<std::string_view>;

Words split(std::string_view input) {
  Words words;
  while (!input.empty()) {
    words.push_back(input.substr(0, input.find('\0')));
    input.remove_prefix(std::min(words.back().size() + 1, input.size()));
  }
  return words;
}

/// As atoi() reads it; empty for what no int can hold, where C lets atoi() do anything.
std::optional<int> number(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool negative = text.substr(0, 1) == "-";
  if (negative || text.substr(0, 1) == "+") {
    text.remove_prefix(1);
  }
  std::int64_t value = 0;
  for (const char c : text.substr(0, text.find_first_not_of("0123456789"))) {
    value = std::min(value * 10 + (c - '0'), INT64_C(10'000'000'000));
  }
  value = negative ? -value : value;
  const bool fits = value >= INT_MIN && value <= INT_MAX;
  return fits ? std::optional(static_cast<int>(value)) : std::nullopt;
}

/// The options of a command line up to the first argument that is none, each with its value.
struct Line {
  std::vector<std::pair<std::string_view, std::string_view>> options;
  std::optional<std::string_view> refused;

  explicit Line(const Words &words) {
    const Words switches = {"--no-sender", "--no-receiver", "--browser", "--no-browser",
                            "--verbose"};
    for (auto word = words.begin(); word != words.end() && !refused; ++word) {
      const bool port = *word == "--http-port" || *word == "--udp-port";
      if (port && word + 1 != words.end()) {
        options.emplace_back(word[0], word[1]);
        ++word;
      } else if (std::count(switches.begin(), switches.end(), *word) != 0) {
        options.emplace_back(*word, "");
      } else {
        refused = *word;
      }
    }
  }

  bool has(std::string_view name) const { return last(name, name) != nullptr; }

  /// The last option of these names; null without one.
  const std::pair<std::string_view, std::string_view> *last(std::string_view name,
                                                            std::string_view other) const {
    const auto found = std::find_if(options.rbegin(), options.rend(), [&](const auto &option) {
      return option.first == name || option.first == other;
    });
    return found == options.rend() ? nullptr : &*found;
  }
};

// The saved port, then the launcher's. NOLINTNEXTLINE(bugprone-easily-swappable-parameters)
void check_port(std::string_view rule, const Line &line, std::string_view name, int saved,
                int got) {
  const auto *option = line.last(name, name);
  const std::optional<int> typed = option == nullptr ? saved : number(option->second);
  if (typed) {
    expect_equal(rule, static_cast<int>(static_cast<unsigned>(*typed) % 65536U), got);
  }
}

void check_options(const Line &line, const Settings &saved, const Options &got) {
  check_port("The last --http-port counts, its low 16 bits; otherwise the saved port.", line,
             "--http-port", saved.ports.http, got.ports.http);
  check_port("The last --udp-port counts, its low 16 bits; otherwise the saved port.", line,
             "--udp-port", saved.ports.udp, got.ports.udp);
  const auto *browser = line.last("--browser", "--no-browser");
  expect_equal("The last of --browser and --no-browser counts; otherwise the saved preference.",
               browser == nullptr ? saved.open_browser : browser->first == "--browser",
               got.open_browser);
  expect_equal("--verbose turns it on.", line.has("--verbose"), got.verbose);
  expect_equal("--no-sender keeps the sender idle.", !line.has("--no-sender"), got.run_sender);
  expect_equal("--no-receiver keeps the receiver idle.", !line.has("--no-receiver"),
               got.run_receiver);
}

Mode mode_of(const Words &words) {
  const Words components = {"hub", "sender", "receiver", "align"};
  if (words.empty()) {
    return Mode::all_in_one;
  }
  if (words[0] == "-h" || words[0] == "--help") {
    return Mode::help;
  }
  return std::count(components.begin(), components.end(), words[0]) != 0 ? Mode::pass_through
                                                                         : Mode::all_in_one;
}

} // namespace

void check(std::string_view input) {
  const Words words = split(input);
  // Each in memory of its own, and no null pointer after the last, so that reading too far is seen.
  std::vector<std::vector<char>> copies;
  std::vector<const char *> arguments = {"launcher"};
  for (const std::string_view word : words) {
    copies.emplace_back(word.begin(), word.end()).push_back('\0');
    arguments.push_back(copies.back().data());
  }
  arguments.shrink_to_fit();
  const int count = static_cast<int>(arguments.size());
  expect_equal("The first argument alone, whole, decides the kind of run.",
               static_cast<int>(mode_of(words)),
               static_cast<int>(choose_mode(count, arguments.data())));
  const Line line(words);
  for (const Settings &saved : {Settings{}, Settings{{5000, 4000}, false}}) {
    Options options(saved);
    const char *refused = parse_options(count, arguments.data(), options);
    expect_equal(
        "Only an argument that is no option, or a port option without a value, is refused.",
        line.refused.has_value(), refused != nullptr);
    if (refused != nullptr) {
      expect_equal<std::string_view>("The first argument that is no option is refused, as typed.",
                                     *line.refused, refused);
    }
    check_options(line, saved, options);
  }
}
