"""Waiting for events, and how long a test does that before it fails."""

import os
import time

DEADLINE = float(os.environ.get("TD_DEADLINE", "30"))


def wait_until(condition, what, deadline=None):
    """Returns the first true value of `condition()`; fails the test when none came in time."""
    end = time.monotonic() + (deadline or DEADLINE)
    while True:
        value = condition()
        if value:
            return value
        assert time.monotonic() < end, f"timed out waiting for {what}"
        time.sleep(0.005)
