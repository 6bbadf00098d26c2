/// The suite's three components as records: which there are, what they are given, how they are
/// found. The list is in start order: hub, receiver, sender. Nothing here takes a lock.
#pragma once

#include "child.h"
#include "command_line.h"

#include <cstdint>
#include <string>
#include <vector>

using Children = std::vector<Child>;

/// The record of the component `name` whose executable lies in `directory` (which ends in "/"):
/// idle, and not wanted running yet.
Child make_child(const std::string &directory, const std::string &name,
                 std::vector<std::string> args);

/// The three records of a run, all idle. What `options` leaves out has a record too, so that the
/// menu can start it later.
Children make_children(const std::string &directory, const Options &options, std::uint16_t http,
                       std::uint16_t udp);

/// The first record of that name, byte for byte; null when there is none.
Child *find_by_name(Children &children, const std::string &name);

/// Gives every record its arguments for the two ports and a fresh allowance of restarts.
void aim_at_ports(Children &children, std::uint16_t http, std::uint16_t udp);

/// Stops every record, whether or not it runs: sender, receiver, hub.
void stop_last_to_first(Children &children);
