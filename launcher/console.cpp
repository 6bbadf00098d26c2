#include "console.h"

#include <cstdio>

void print_title(const char *version) {
  std::printf("\n\x1b[1mTandrel\x1b[0m \x1b[2m%s\x1b[0m\n", version);
}

void print_banner(const std::string &url, const Options &options) {
  std::printf("\n  Dashboard  : \x1b[1;36m%s\x1b[0m\n", url.c_str());
  std::printf("  Running    : hub%s%s\n", options.run_receiver ? ", receiver" : "",
              options.run_sender ? ", sender" : "");
  if (!options.run_sender) {
    std::puts("  \x1b[2m(--no-sender: this machine is not offering its audio)\x1b[0m");
  }
  std::puts("\n  \x1b[2mOpen the dashboard to choose devices and route audio.\x1b[0m");
  std::puts("  \x1b[2mCtrl-C here stops everything.\x1b[0m\n");
}

void print_verbose_note() {
  std::puts("\x1b[2m  (--verbose: the components are drawing their own terminal UIs over each "
            "other)\x1b[0m\n");
}
