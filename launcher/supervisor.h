/// Watches the components and restarts the ones that exit.
#pragma once

#include "child.h"

#include <atomic>
#include <mutex>
#include <vector>

/// A component is restarted this often; its next exit leaves it stopped. Only a manual start or
/// restart or a port change sets the count back.
constexpr int restart_limit = 5;

/// The count of a component that was given up on.
constexpr int restarts_given_up = 1000;

/// Looks every 400 ms at each record that is `supervised` and running; restarts, 500 ms later, one
/// whose process has exited, and leaves it stopped after `restart_limit` restarts, clearing
/// `running` if it is critical. Returns once `running` is false, at the latest 400 ms and one pass
/// later. Says on standard error what it does.
///
/// `children` is touched only with `children_mutex` held, which stays held through a restart with
/// its pause. Runs on any one thread.
void supervise(std::vector<Child> &children, std::mutex &children_mutex,
               std::atomic<bool> &running);
