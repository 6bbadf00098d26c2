/// Lets the processes that a test has started notice the end of the test.
#pragma once

#include <string>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

/// The test ends when this is destroyed. `path` is a new file in a folder that outlives it.
class EndOfTest {
public:
  explicit EndOfTest(std::string path) : path_(std::move(path)) {
    EXPECT_EQ(mkfifo(path_.c_str(), 0600), 0);
    writer_ = open(path_.c_str(), O_RDWR | O_CLOEXEC);
  }
  EndOfTest(const EndOfTest &) = delete;
  EndOfTest &operator=(const EndOfTest &) = delete;
  ~EndOfTest() {
    unlink(path_.c_str()); // for a process that has not opened it yet
    close(writer_);
  }

  /// A shell command that ends with the test, when its file has no writer any more.
  [[nodiscard]] std::string wait_command() const { return "/bin/cat " + path_; }

private:
  std::string path_;
  int writer_ = -1;
};
