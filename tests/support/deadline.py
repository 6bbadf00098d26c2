"""Waiting for events, and the deadline after which a test fails."""

import os
import time

DEADLINE = float(os.environ.get("TD_DEADLINE", "30"))


def wait_until(condition, what, deadline=None):
    """Returns the first true value of `condition()`; fails the test if there is none in time. `what` is what it
    waits for, or makes that text when there is none."""
    end = time.monotonic() + (deadline or DEADLINE)
    while True:
        value = condition()
        if value:
            return value
        assert time.monotonic() < end, f"timed out waiting for {what() if callable(what) else what}"
        time.sleep(0.005)
