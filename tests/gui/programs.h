/// Programs that run in place of the desktop's.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace gui_test {

inline std::string contents(const std::string &path) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

/// A private folder; its destructor removes it with everything in it.
class Folder {
public:
  Folder() {
    char name[] = "/tmp/gui-test-XXXXXX";
    path = mkdtemp(name);
  }
  ~Folder() { std::filesystem::remove_all(path); }
  /// A program that writes its arguments into the file "opened".
  void add_program(const std::string &name) const {
    const std::string file = path + "/" + name, result = path + "/opened";
    std::ofstream(file) << "#!/bin/sh\necho \"" << name << " $*\" >\"" << result << ".new\"\nmv \""
                        << result << ".new\" \"" << result << "\"\n";
    chmod(file.c_str(), 0700);
  }
  std::string path;
};

/// Sets PATH while it exists.
class SearchPath {
public:
  explicit SearchPath(const std::string &path) : before_(getenv("PATH")) {
    setenv("PATH", path.c_str(), 1);
  }
  ~SearchPath() { setenv("PATH", before_.c_str(), 1); }

private:
  std::string before_;
};

} // namespace gui_test
