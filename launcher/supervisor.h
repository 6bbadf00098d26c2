/// Watches the components and restarts the ones that exit.
#pragma once

#include "child.h"

#include <atomic>
#include <mutex>

/// A component is restarted this often; its next exit leaves it stopped. Only a manual start or
/// restart or a port change resets the count.
constexpr int restart_limit = 5;

/// The count that marks a component as given up on.
constexpr int restarts_given_up = 1000;

/// Polls, every 400 ms, each record that is `supervised` and running. One whose process has exited
/// is restarted after 500 ms; after `restart_limit` restarts it is left stopped instead, and
/// `running` is cleared if it is critical. Returns once `running` is false, at the latest 400 ms
/// and one pass later. Reports what it does on standard error.
///
/// `children` is used only with `children_mutex` held, which stays held through a restart with its
/// pause. Runs on any one thread.
void supervise(Children &children, std::mutex &children_mutex, std::atomic<bool> &running);
