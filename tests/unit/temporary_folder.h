/// A private folder for one test.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

/// Exists as long as this object, and is removed with everything in it.
struct TemporaryFolder {
  std::filesystem::path path;

  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tandrel-unit-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("no temporary folder");
    }
    path = pattern;
  }
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;
  TemporaryFolder(TemporaryFolder &&) = delete;
  TemporaryFolder &operator=(TemporaryFolder &&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }

  /// The folder with a "/" at its end.
  [[nodiscard]] std::string prefix() const { return path.string() + "/"; }

  /// Writes a file, executable if asked, and returns its path.
  [[nodiscard]] std::string write(const std::string &name, const std::string &text,
                                  bool executable = false) const {
    const std::filesystem::path file = path / name;
    std::ofstream(file, std::ios::binary) << text;
    if (executable) {
      std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }
    return file.string();
  }

  [[nodiscard]] std::string read(const std::string &name) const {
    std::ifstream file(path / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
};
