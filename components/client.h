/// The stand-in for the receiver and the sender. Both only register with the hub.
#pragma once

#include "protocol.h"

namespace standin {

/// Runs the program of `role` with the arguments of main(), and ends the process.
[[noreturn]] void run_client(Role role, int argc, char **argv);

} // namespace standin
