#include "directories.h"
#include "temporary_folder.h"

#include <filesystem>
#include <string>
#include <utility>

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

TEST(DirectoryOf, IsThePathUpToItsLastSlash) {
  EXPECT_EQ(td::directory_of("/opt/tools/launcher"), "/opt/tools/");
  EXPECT_EQ(td::directory_of("/launcher"), "/");
  EXPECT_EQ(td::directory_of("./launcher"), "./");
  EXPECT_EQ(td::directory_of("/a/./b/../launcher"), "/a/./b/../");
  EXPECT_EQ(td::directory_of("launcher"), "./");
  EXPECT_EQ(td::directory_of(""), "./");
}

TEST(ExecutableDir, IsTheFolderOfThisProgram) {
  const std::string directory = td::executable_dir();
  EXPECT_EQ(directory.back(), '/');
  EXPECT_TRUE(fs::exists(directory + "unit_tests"));
}

struct ConfigDir : testing::Test {
  TemporaryFolder folder;
  std::string home = folder.prefix() + "home";
  std::string bundle = folder.prefix() + "Tandrel.app/Contents/MacOS/";
  std::string support = home + "/Library/Application Support";

  void SetUp() override {
    fs::create_directories(home + "/Library");
    fs::create_directories(bundle);
  }
};

TEST_F(ConfigDir, OfABundleIsMadeInTheUsersApplicationSupport) {
  EXPECT_EQ(td::config_dir_for(bundle, home.c_str()), support + "/Tandrel/");
  EXPECT_TRUE(fs::is_directory(support + "/Tandrel"));
  EXPECT_FALSE(fs::exists(bundle + "config"));
  EXPECT_EQ(td::config_dir_for(bundle, home.c_str()), support + "/Tandrel/") << "again";
}

TEST_F(ConfigDir, IsMadeWithPermissionsThatTheMaskLimits) {
  const auto mode = [](const std::string &path) {
    struct stat info = {};
    EXPECT_EQ(stat(path.c_str(), &info), 0);
    return info.st_mode & 07777U;
  };
  const std::pair<mode_t, mode_t> masks_and_modes[] = {
      {0000, 0755}, {0022, 0755}, {0027, 0750}, {0077, 0700}};
  for (const auto &[mask, expected] : masks_and_modes) {
    const mode_t before = umask(mask);
    td::config_dir_for(bundle, home.c_str());
    td::config_dir_for(folder.prefix(), home.c_str());
    umask(before);
    EXPECT_EQ(mode(support), expected);
    EXPECT_EQ(mode(support + "/Tandrel"), expected);
    EXPECT_EQ(mode(folder.prefix() + "config"), expected);
    fs::remove_all(support);
    fs::remove(folder.path / "config");
  }
}

TEST_F(ConfigDir, OfABundleWithoutAHomeIsBesideTheLauncher) {
  EXPECT_EQ(td::config_dir_for(bundle, nullptr), bundle + "config/");
  EXPECT_EQ(td::config_dir_for(bundle, ""), bundle + "config/");
}

TEST_F(ConfigDir, NeverMakesTheHomeFolderOrItsLibrary) {
  const std::string missing = folder.prefix() + "missing";
  EXPECT_EQ(td::config_dir_for(bundle, missing.c_str()), bundle + "config/");
  EXPECT_FALSE(fs::exists(missing));
  fs::remove(home + "/Library");
  EXPECT_EQ(td::config_dir_for(bundle, home.c_str()), bundle + "config/");
  EXPECT_TRUE(fs::is_empty(home));
}

TEST_F(ConfigDir, OfABundleWithAFileInTheWayIsBesideTheLauncher) {
  fs::create_directory(support);
  (void)folder.write("home/Library/Application Support/Tandrel", "");
  EXPECT_EQ(td::config_dir_for(bundle, home.c_str()), bundle + "config/");
}

TEST_F(ConfigDir, OutsideABundleIgnoresHome) {
  EXPECT_EQ(td::config_dir_for(folder.prefix(), home.c_str()), folder.prefix() + "config/");
  EXPECT_TRUE(fs::is_directory(folder.path / "config"));
  EXPECT_FALSE(fs::exists(support));
}

TEST_F(ConfigDir, IsTheLaunchersOwnFolderWhenAFileIsNamedConfig) {
  (void)folder.write("config", "");
  EXPECT_EQ(td::config_dir_for(folder.prefix(), home.c_str()), folder.prefix());
}

TEST_F(ConfigDir, IsTheLaunchersOwnFolderWhenThatIsMissing) {
  const std::string missing = folder.prefix() + "missing/";
  EXPECT_EQ(td::config_dir_for(missing, nullptr), missing);
}

TEST_F(ConfigDir, TheBundleTestIsTheEndOfThePathByteForByte) {
  const auto counts = [this](const std::string &exe) {
    return td::config_dir_for(exe, home.c_str()) == support + "/Tandrel/";
  };
  EXPECT_TRUE(counts("/Contents/MacOS/"));
  EXPECT_TRUE(counts("/no/such/x/Contents/MacOS/"));
  EXPECT_FALSE(counts("/no/such/contents/macos/"));
  EXPECT_FALSE(counts("/no/such/Contents/MACOS/"));
  EXPECT_FALSE(counts("/no/such/XContents/MacOS/"));
  EXPECT_FALSE(counts("/no/such/MacOS/"));
  EXPECT_FALSE(counts("/no/such/Contents/MacOS/x/"));
  EXPECT_FALSE(counts("/no/such/xContents/MacOS/"));
  EXPECT_FALSE(counts("Contents/MacOS/"));
}

} // namespace
