/// The receiver's and the sender's stand-in: both only register with the hub.
#pragma once

#include "registration.h"

namespace standin {

/// The whole program of `role`, from main()'s arguments to its end.
[[noreturn]] void run_client(Role role, int argc, char **argv);

} // namespace standin
