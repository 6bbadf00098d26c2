#include "suite.h"

#include <utility>

namespace {

std::vector<std::string> args_for(const std::string &name, Ports ports) {
  if (name == "hub") {
    return {"--udp-port", std::to_string(ports.udp), "--http-port", std::to_string(ports.http)};
  }
  return {"--hub", "127.0.0.1:" + std::to_string(ports.udp)};
}

} // namespace

Child make_child(const std::string &directory, const std::string &name,
                 std::vector<std::string> args) {
  Child child;
  child.name = name;
  child.path = directory + "td_" + name;
  child.args = std::move(args);
  return child;
}

Children make_children(const std::string &directory, const Options &options,
                       SharedTerminal *terminal) {
  struct Component {
    const char *name;
    bool critical;
    bool supervised;
  };
  Children children;
  for (const Component &component :
       {Component{"hub", true, true}, Component{"receiver", false, options.run_receiver},
        Component{"sender", false, options.run_sender}}) {
    Child child = make_child(directory, component.name, args_for(component.name, options.ports));
    child.critical = component.critical;
    child.supervised = component.supervised;
    child.quiet = !options.verbose;
    child.terminal = child.quiet ? nullptr : terminal;
    children.push_back(std::move(child));
  }
  return children;
}

Child *find_by_name(Children &children, const std::string &name) {
  for (Child &child : children) {
    if (child.name == name) {
      return &child;
    }
  }
  return nullptr;
}

void set_port_arguments(Children &children, Ports ports) {
  for (Child &child : children) {
    child.args = args_for(child.name, ports);
    child.restarts = 0;
  }
}

void stop_last_to_first(Children &children) {
  for (auto child = children.rbegin(); child != children.rend(); ++child) {
    stop(*child);
  }
}
