#include "settings.h"
#include "temporary_folder.h"

#include <string>

#include <gmock/gmock.h>

namespace {

using std::string_literals::operator""s;

/// The three settings of a text, in a form that a failing test shows.
std::string read_as(std::string_view text, bool open_browser = true) {
  const Settings settings = parse_settings(text, open_browser);
  return std::to_string(settings.ports.http) + " " + std::to_string(settings.ports.udp) +
         (settings.open_browser ? " open" : " closed");
}

std::string with_http_port(const std::string &value) {
  return R"({"http_port": )" + value + R"(, "udp_port": 4000})";
}

TEST(ParseSettings, DefaultsWhereNothingIsSaid) {
  EXPECT_EQ(read_as(""), "4466 4465 open");
  EXPECT_EQ(read_as("{}"), "4466 4465 open");
  EXPECT_EQ(read_as("{}", false), "4466 4465 closed");
}

TEST(ParseSettings, TakesPortsFrom1To65535) {
  EXPECT_EQ(read_as(with_http_port("1")), "1 4000 open");
  EXPECT_EQ(read_as(with_http_port("65535")), "65535 4000 open");
  for (const char *value : {"0", "-1", "65536", "2147483647", "-2147483648", "x"}) {
    EXPECT_EQ(read_as(with_http_port(value)), "4466 4000 open") << value;
  }
}

TEST(ParseSettings, ReadsNumbersAsTheCLibraryDoes) {
  EXPECT_EQ(read_as(with_http_port("\"5000\"")), "4466 4000 open");
  EXPECT_EQ(read_as(with_http_port("5000abc")), "5000 4000 open");
  EXPECT_EQ(read_as(with_http_port("+5000")), "5000 4000 open");
  EXPECT_EQ(read_as(with_http_port("\n\v\f\r\t 5000")), "5000 4000 open");
  EXPECT_EQ(read_as(with_http_port("- 5000")), "4466 4000 open");
  EXPECT_EQ(read_as(with_http_port("0005000")), "5000 4000 open");
}

TEST(ParseSettings, TheNextColonCountsWhereverItIs) {
  EXPECT_EQ(read_as("{\"http_port\" 5000,\n\"udp_port\": 4000}"), "4000 4000 open");
  EXPECT_EQ(read_as(R"("udp_port": 4000 "http_port" 5000)"), "4466 4000 open");
  EXPECT_EQ(read_as(R"("http_port")"), "4466 4465 open");
}

TEST(ParseSettings, FindsTheFirstOfEachKeyAnywhere) {
  EXPECT_EQ(read_as(R"("udp_port":1,"http_port":2,"udp_port":3,"http_port":4)"), "2 1 open");
  EXPECT_EQ(read_as(R"("note": "say \"udp_port\" here", x: 7)"), "4466 4465 open");
  EXPECT_EQ(read_as(R"("note": "say "udp_port" here", "x": 7)"), "4466 7 open");
  EXPECT_EQ(read_as(R"(http_port: 5000, "HTTP_PORT": 6000)"), "4466 4465 open");
}

TEST(ParseSettings, PreferenceIsOffOnlyForTheWordFalse) {
  const auto preference = [](const std::string &value, bool otherwise = true) {
    return parse_settings("{\"open_browser\"" + value + "}", otherwise).open_browser;
  };
  for (const char *off : {":false", ": false", ":\t \tfalse", ":: :false", ":falsehood"}) {
    EXPECT_FALSE(preference(off)) << off;
  }
  for (const char *on : {":true", ":False", ":0", ":null", ":\"false\"", ":\nfalse", ":\rfalse",
                         ":fals", ":", ": f"}) {
    EXPECT_TRUE(preference(on, false)) << on;
  }
  EXPECT_FALSE(preference(" false", false)) << "no colon keeps the value";
  EXPECT_TRUE(preference(" false", true)) << "no colon keeps the value";
}

TEST(ParseSettings, LooksAtTheFirst511BytesOnly) {
  const std::string entry = R"("http_port":5000)";
  EXPECT_EQ(read_as(std::string(511 - entry.size(), ' ') + entry), "5000 4465 open");
  EXPECT_EQ(read_as(std::string(512 - entry.size(), ' ') + entry), "500 4465 open");
  EXPECT_EQ(read_as(std::string(511, ' ') + entry), "4466 4465 open");
}

TEST(ParseSettings, EndsAtTheFirstNul) {
  EXPECT_EQ(read_as("\0\"http_port\":5000"s), "4466 4465 open");
  EXPECT_EQ(read_as("\"http_port\":50\00000"s), "50 4465 open");
  EXPECT_EQ(read_as("\"open_browser\":fal\0se"s), "4466 4465 open");
}

TEST(FormatSettings, WritesTheCanonicalText) {
  EXPECT_EQ(format_settings({}), "{\n  \"http_port\": 4466,\n  \"udp_port\": 4465,\n"
                                 "  \"open_browser\": true\n}\n");
  EXPECT_EQ(format_settings({}).size(), 68U);
  EXPECT_EQ(format_settings({{65535, 65534}, false}).size(), 71U);
  EXPECT_THAT(format_settings({{0, 7}, false}), testing::HasSubstr("\"http_port\": 0,\n"));
}

TEST(FormatSettings, EveryPortAndPreferenceSurvivesAWriteAndARead) {
  for (int port = 1; port <= 65535; ++port) {
    for (const bool open : {false, true}) {
      const auto http = static_cast<std::uint16_t>(port);
      const auto udp = static_cast<std::uint16_t>(65536 - port);
      const Settings back = parse_settings(format_settings({{http, udp}, open}), !open);
      ASSERT_EQ(back.ports.http, http);
      ASSERT_EQ(back.ports.udp, udp);
      ASSERT_EQ(back.open_browser, open);
    }
  }
  EXPECT_EQ(read_as(format_settings({{0, 0}, true})), "4466 4465 open");
}

TEST(SettingsFile, IsWrittenInPlaceAndReadBack) {
  const TemporaryFolder folder;
  const std::string path = folder.write("launcher.json", std::string(1000, 'x'));
  write_settings(path, {{5000, 4000}, false});
  EXPECT_EQ(folder.read("launcher.json"), format_settings({{5000, 4000}, false}));
  const Settings back = read_settings(path, true);
  EXPECT_EQ(back.ports.http, 5000);
  EXPECT_EQ(back.ports.udp, 4000);
  EXPECT_FALSE(back.open_browser);
}

TEST(SettingsFile, ThatCannotBeReadGivesTheDefaults) {
  const TemporaryFolder folder;
  const auto ports = [&](const std::string &path) {
    const Settings settings = read_settings(path, false);
    return std::pair(settings.ports.http, settings.ports.udp);
  };
  EXPECT_EQ(ports(folder.prefix() + "missing"), std::pair(Ports{}.http, Ports{}.udp));
  EXPECT_EQ(ports(folder.prefix()), std::pair(Ports{}.http, Ports{}.udp));
  EXPECT_EQ(ports(folder.write("empty", "")), std::pair(Ports{}.http, Ports{}.udp));
  EXPECT_FALSE(read_settings(folder.prefix() + "missing", false).open_browser);
}

TEST(SettingsFile, ThatCannotBeWrittenIsPassedOver) {
  const TemporaryFolder folder;
  write_settings(folder.prefix() + "no/such/folder/launcher.json", {});
  EXPECT_TRUE(std::filesystem::is_empty(folder.path));
}

} // namespace
