#include "tools.h"

#include "child.h"
#include "platform.h"

#include <cstdio>

bool run_tool(const std::string &command, const std::vector<std::string> &variables) {
  Child shell;
  shell.name = "sh";
  shell.path = "/bin/sh";
  shell.args = {"-c", command};
  if (!variables.empty()) {
    shell.args.insert(shell.args.begin(), shell.path);
    shell.args.insert(shell.args.begin(), variables.begin(), variables.end());
    shell.path = "/usr/bin/env";
  }
  return spawn(shell) && wait_for_exit(shell) == 0;
}

void open_browser(const std::string &url) {
  run_tool(platform::browser_command(url));
}

void fatal_dialog(const std::string &message) {
  std::fprintf(stderr, "%s\n", message.c_str());
  if (message.find('\'') != std::string::npos) {
    return;
  }
  run_tool(platform::alert_command(message));
}
