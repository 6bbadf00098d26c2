#include "independent_settings.h"
#include "settings.h"
#include "temporary_folder.h"

#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using std::string_literals::operator""s;

/// Settings as text, for the messages of failing tests: "HTTP UDP open" or "HTTP UDP closed".
std::string shown(const Settings &settings) {
  return std::to_string(settings.ports.http) + " " + std::to_string(settings.ports.udp) +
         (settings.open_browser ? " open" : " closed");
}

/// The settings of a text, which the independent reader must agree with.
std::string read_as(std::string_view text, bool open_browser = true) {
  const std::string settings = shown(parse_settings(text, open_browser));
  EXPECT_EQ(shown(read_independently(text, open_browser)), settings) << text;
  return settings;
}

std::string with_http_port(const std::string &value) {
  return R"({"http_port": )" + value + R"(, "udp_port": 4000})";
}

std::string blanks_then(std::size_t count, const std::string &entry) {
  return std::string(count, ' ') + entry;
}

TEST(ParseSettings, GivesTheDefaultsForMissingSettings) {
  EXPECT_EQ(read_as(""), "4466 4465 open");
  EXPECT_EQ(read_as("{}"), "4466 4465 open");
  EXPECT_EQ(read_as("{}\n"), "4466 4465 open");
  EXPECT_EQ(read_as("{}", false), "4466 4465 closed");
}

TEST(ParseSettings, TakesWholeFiles) {
  EXPECT_EQ(read_as(format_settings({})), "4466 4465 open");
  EXPECT_EQ(read_as(format_settings({{5000, 5001}, false})), "5000 5001 closed");
  EXPECT_EQ(read_as(R"({"udp_port":5001,"open_browser":false,"http_port":5000})"),
            "5000 5001 closed");
  EXPECT_EQ(read_as(R"(no JSON "http_port" at : 5000 all)"), "5000 4465 open");
  EXPECT_EQ(read_as("\xff\xfe\x80\"http_port\":5000\xff"), "5000 4465 open");
}

TEST(ParseSettings, TakesPortsFrom1To65535) {
  EXPECT_EQ(read_as(with_http_port("1")), "1 4000 open");
  EXPECT_EQ(read_as(with_http_port("65535")), "65535 4000 open");
  for (const char *value : {"0", "-1", "65536", "70000", "2147483647", "-2147483648", "x"}) {
    EXPECT_EQ(read_as(with_http_port(value)), "4466 4000 open") << value;
  }
}

TEST(ParseSettings, TakesNoPartOfANumberBeyond32Or64Bits) {
  const std::string huge = "1" + std::string(40, '0');
  for (const std::string &value : {"4294972296"s, "-4294962296"s, // 5000 in their low 32 bits
                                   "18446744073709556616"s, "-18446744073709546616"s, // in their 64
                                   "9223372036854775808"s, huge, "-" + huge}) {
    EXPECT_EQ(read_as(with_http_port(value)), "4466 4000 open") << value;
  }
}

TEST(ParseSettings, ReadsNumbersAsTheCLibraryDoes) {
  for (const char *value : {"5000abc", "5000.9", "+5000", "\n\v\f\r\t 5000", "0005000"}) {
    EXPECT_EQ(read_as(with_http_port(value)), "5000 4000 open") << value;
  }
  for (const char *value : {"\"5000\"", "0x1388", "+-5000", "- 5000", "null", "\u00a05000"}) {
    EXPECT_EQ(read_as(with_http_port(value)), "4466 4000 open") << value;
  }
}

TEST(ParseSettings, KeyWithoutAValueGivesTheDefault) {
  for (const char *text : {R"("http_port")", R"({"http_port"})", R"({"http_port")",
                           R"({"http_port":)", R"({"http_port": })", R"({"http_port":: 5000})"}) {
    EXPECT_EQ(read_as(text), "4466 4465 open") << text;
  }
}

TEST(ParseSettings, TheNextColonCountsWhereverItIs) {
  EXPECT_EQ(read_as("{\"http_port\" 5000,\n\"udp_port\": 4000}"), "4000 4000 open");
  EXPECT_EQ(read_as(R"({"http_port" "udp_port": 4000})"), "4000 4000 open");
  EXPECT_EQ(read_as("{\"http_port\"\n\n, \"x\", \"udp_port\" : 4000}"), "4000 4000 open");
  EXPECT_EQ(read_as(R"("udp_port": 4000 "http_port" 5000)"), "4466 4000 open");
  EXPECT_EQ(read_as(R"({"open_browser", "udp_port": false})"), "4466 4465 closed");
}

TEST(ParseSettings, FindsTheFirstOfEachKeyAnywhere) {
  EXPECT_EQ(read_as(R"("udp_port":1,"http_port":2,"udp_port":3,"http_port":4)"), "2 1 open");
  EXPECT_EQ(read_as(R"({"http_port": 0, "http_port": 5001})"), "4466 4465 open");
  EXPECT_EQ(read_as(R"({"open_browser": true, "open_browser": false})"), "4466 4465 open");
  EXPECT_EQ(read_as(R"("note": "say \"udp_port\" here", x: 7)"), "4466 4465 open");
  EXPECT_EQ(read_as(R"("note": "say "udp_port" here", "x": 7)"), "4466 7 open");
  EXPECT_EQ(read_as(R"({"note": "the "http_port" was: 5000"})"), "5000 4465 open");
  for (const char *text : {R"({"xhttp_port": 5000})", R"({"HTTP_PORT": 6000})",
                           R"({http_port: 5000})", R"({'http_port': 5000})"}) {
    EXPECT_EQ(read_as(text), "4466 4465 open") << text;
  }
}

TEST(ParseSettings, PreferenceIsOffOnlyForTheWordFalse) {
  const auto preference = [](const std::string &value, bool otherwise) {
    return read_as("{\"open_browser\"" + value + "}", otherwise);
  };
  for (const char *off : {":false", ": false", ":\t \tfalse", ":: :false", " \t:: \t:\tfalse",
                          "\n:false", ":falsehood"}) {
    EXPECT_EQ(preference(off, true), "4466 4465 closed") << off;
  }
  for (const char *on : {":true", ":False", ": FALSE", ":0", ":null", ":\"false\"", ":\nfalse",
                         ":\rfalse", ":fals", ":", ": f"}) {
    EXPECT_EQ(preference(on, false), "4466 4465 open") << on;
  }
  EXPECT_EQ(preference(" false", false), "4466 4465 closed") << "no colon keeps the value";
  EXPECT_EQ(preference(" false", true), "4466 4465 open") << "no colon keeps the value";
}

TEST(ParseSettings, ReadsTheFirst511BytesOnly) {
  const std::string port = R"("http_port": 5000)";
  EXPECT_EQ(read_as(blanks_then(511 - port.size(), port)), "5000 4465 open");
  EXPECT_EQ(read_as(blanks_then(512 - port.size(), port)), "500 4465 open");
  EXPECT_EQ(read_as(blanks_then(511 - 13, port)), "4466 4465 open") << "cut after the colon";
  EXPECT_EQ(read_as(blanks_then(511 - 10, port)), "4466 4465 open") << "cut in the key";
  EXPECT_EQ(read_as(blanks_then(511, port)), "4466 4465 open");
  const std::string preference = R"("open_browser":false)";
  EXPECT_EQ(read_as(blanks_then(511 - preference.size(), preference)), "4466 4465 closed");
  EXPECT_EQ(read_as(blanks_then(512 - preference.size(), preference)), "4466 4465 open");
  EXPECT_EQ(read_as(port + blanks_then(100'000, R"("udp_port": 5001)")), "5000 4465 open");
}

TEST(ParseSettings, EndsAtTheFirstNul) {
  EXPECT_EQ(read_as("\0\"http_port\":5000, \"open_browser\": false"s), "4466 4465 open");
  EXPECT_EQ(read_as("\"http_port\": 50\00000, \"udp_port\": 5001"s), "50 4465 open");
  EXPECT_EQ(read_as("\"http_port\"\0: 5000"s), "4466 4465 open");
  EXPECT_EQ(read_as("\"open_browser\": \0false"s), "4466 4465 open");
  EXPECT_EQ(read_as("\"open_browser\":fal\0se"s), "4466 4465 open");
}

TEST(ParseSettings, ReadsRandomTextsAsTheIndependentReaderDoes) {
  RandomSettingsTexts texts;
  int with_port = 0;
  int with_preference = 0;
  for (int i = 0; i < 20'000 && !HasFailure(); ++i) {
    const std::string settings = read_as(texts.next());
    with_port += settings.find("4466 4465 ") == 0 ? 0 : 1;
    with_preference += settings.find("closed") == std::string::npos ? 0 : 1;
  }
  // Not all texts are read as the defaults.
  EXPECT_GT(with_port, 1000);
  EXPECT_GT(with_preference, 200);
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

TEST(SettingsFile, ThatIsNoRegularFileIsNeitherReadNorWritten) {
  const TemporaryFolder folder;
  const std::string fifo = folder.prefix() + "launcher.json";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(read_settings(fifo, false).ports.http, Ports{}.http); // and returns
  EXPECT_FALSE(read_settings(fifo, false).open_browser);
  const int reader = open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
  write_settings(fifo, {});
  char byte = 0;
  EXPECT_EQ(read(reader, &byte, 1), 0) << "nothing was written";
  close(reader);
}

TEST(SettingsFile, ThatCannotBeWrittenIsIgnored) {
  const TemporaryFolder folder;
  write_settings(folder.prefix() + "no/such/folder/launcher.json", {});
  EXPECT_TRUE(std::filesystem::is_empty(folder.path));
}

} // namespace
