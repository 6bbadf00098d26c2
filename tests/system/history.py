"""What recording components lived through, and ways to catch the launcher at a given moment."""

import fcntl
import os
from pathlib import Path
from signal import SIGKILL

from suite import wait_until

RESTARTING = "Tandrel: restarting the {}...\n"
NOT_RESTARTED = "Tandrel: could not restart the {}\n"
NOT_STARTED = "Tandrel: could not start the {}\n"
LEFT_STOPPED = "Tandrel: the {} keeps exiting; leaving it stopped.\n"
SECOND = 10**9  # in the unit of recorded times


def given_up(name):
    """Everything that is said about a component that keeps exiting."""
    return RESTARTING.format(name) * 5 + LEFT_STOPPED.format(name)


def starts(suite, name):
    return suite.events("start", f"td_{name}")


def exits(suite, name):
    return suite.events("exit", f"td_{name}")


def stops(suite):
    """The components that were told to stop, in order."""
    return [row["program"] for row in suite.events("stop")]


def wait_for_start(suite, name, count=1):
    """The start of that number of a component, once there was one."""
    return wait_until(lambda: starts(suite, name)[count - 1 :], f"start {count} of the {name}")[0]


def _state(pid):
    try:
        return Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0]
    except (FileNotFoundError, ProcessLookupError):
        return None


def is_gone(pid):
    """Whether a process has ended and its parent has taken note of it."""
    return _state(pid) is None


def kill(suite, name, number=SIGKILL):
    """Kills a component's newest process and returns its id once it is dead."""
    pid = starts(suite, name)[-1]["pid"]
    os.kill(pid, number)
    wait_until(lambda: _state(pid) in (None, "Z"), f"the end of the {name}")
    return pid


def see_two_passes(suite, watched="hub"):
    """Returns after the supervisor has looked at every component at least once more.

    `watched` is killed twice: between its restarts lies a whole pass.
    """
    for _ in range(2):
        count = len(starts(suite, watched))
        kill(suite, watched)
        wait_for_start(suite, watched, count + 1)


class BlockedErrors:
    """A standard error that takes nothing until `release`.

    The launcher stands still at its next message, so that a test can arrange what it finds next.
    """

    def __init__(self):
        self._reading, self.writing = os.pipe()
        size = fcntl.fcntl(self.writing, fcntl.F_SETPIPE_SZ, 4096)
        os.write(self.writing, b" " * size)

    def release(self):
        os.read(self._reading, 65536)

    def text(self):
        """What was written after `release`, once the launcher and its components have ended."""
        os.close(self.writing)
        with open(self._reading, "rb") as pipe:
            return pipe.read().decode()
