/// The three components of an all-in-one run: their records, arguments and stop order. The list is
/// in start order: hub, receiver, sender. Nothing here takes a lock.
#pragma once

#include "child.h"
#include "command_line.h"

#include <string>
#include <vector>

/// The record of the component `name`, whose executable "td_<name>" lies in `directory` (which ends
/// in "/"): idle and not supervised.
Child make_child(const std::string &directory, const std::string &name,
                 std::vector<std::string> args);

/// The three records of a run, all idle. A component that `options` leaves out has a record too,
/// not supervised, so that the menu can start it later. Those that are not quiet share `terminal`,
/// which must outlive them; null: its mode is not restored.
Children make_children(const std::string &directory, const Options &options,
                       SharedTerminal *terminal = nullptr);

/// The first record of that name, byte for byte; null when there is none.
Child *find_by_name(Children &children, const std::string &name);

/// Replaces every record's arguments by those for `ports` and sets its count of restarts to 0.
void set_port_arguments(Children &children, Ports ports);

/// Stops every record, whether or not it runs: sender, receiver, hub.
void stop_last_to_first(Children &children);
