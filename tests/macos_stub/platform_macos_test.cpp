// platform_macos.cpp and interface_macos.cpp, with functions in place of macOS's that return what a
// test wants.

#include "interface.h"
#include "platform.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mach-o/dyld.h>

namespace {

std::string g_path;                  // of the running executable
CFDictionaryRef g_session = nullptr; // with the window server
std::vector<CFTypeRef> g_released;   // in this order

} // namespace

extern "C" {

int _NSGetExecutablePath(char *buffer, std::uint32_t *size) { // NOLINT
  if (*size <= g_path.size()) {
    return -1;
  }
  std::memcpy(buffer, g_path.c_str(), g_path.size() + 1);
  return 0;
}

CFDictionaryRef CGSessionCopyCurrentDictionary() {
  return g_session;
}

void CFRelease(CFTypeRef object) {
  g_released.push_back(object);
}
}

void tdgui::run(const GuiConfig & /*config*/) {}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MacInterface : public testing::Test {
protected:
  void SetUp() override {
    g_session = nullptr;
    g_released.clear();
  }

  static platform::RunFunction find() {
    platform::start_interface_search("/");
    return platform::find_interface("/", true);
  }
};

TEST_F(MacInterface, IsFoundWithAGraphicSession) {
  const char object = 0;
  g_session = reinterpret_cast<CFDictionaryRef>(&object);
  EXPECT_EQ(find(), &tdgui::run);
  EXPECT_THAT(g_released, ElementsAre(&object));
}

TEST_F(MacInterface, IsNotFoundWithoutAGraphicSession) {
  EXPECT_EQ(find(), nullptr);
  EXPECT_THAT(g_released, IsEmpty()); // CFRelease does not take null
}

TEST(MacExecutablePath, IsWhatTheSystemReports) {
  g_path = "/Applications/./Tandrel.app/Contents/MacOS/launcher";
  EXPECT_EQ(platform::executable_path(), g_path);
}

TEST(MacTools, AreTheSystemsOwn) {
  EXPECT_EQ(platform::browser_command("http://10.0.0.5:4466/"), "open \"http://10.0.0.5:4466/\"");
  EXPECT_EQ(platform::alert_command(R"(a "b" \c)"),
            R"(osascript -e 'display alert "Tandrel" message "a \"b\" \\c" as critical')"
            " >/dev/null 2>&1");
}

TEST(MacExecutablePath, HasAtMost4095Bytes) {
  g_path = std::string(4095, '/');
  EXPECT_EQ(platform::executable_path(), g_path);
  g_path += '/';
  EXPECT_EQ(platform::executable_path(), "");
}

} // namespace
