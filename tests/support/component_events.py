"""The events that components have recorded, and helpers that wait for them or cause them."""

import os
from signal import SIGKILL

import system
from components import COMPONENTS
from deadline import wait_until

SECOND = 10**9  # recorded times are in nanoseconds
KILL_DELAY = 4 * SECOND  # from a component's SIGTERM to its SIGKILL


def start_recording(suite, *arguments, **options):
    """A console run without a browser; its components record events and have all started."""
    suite.record()
    run = suite.start_up("--no-browser", *arguments, **options)
    wait_for_components(suite)
    return run


def wait_for_components(suite, count=1):
    """Waits until hub, receiver and sender have each been started `count` times."""
    for name in COMPONENTS:
        wait_for_start(suite, name, count)


def starts(suite, name):
    return suite.events("start", f"td_{name}")


def exits(suite, name):
    return suite.events("exit", f"td_{name}")


def stops(suite):
    """The programs that got a signal to stop, in order."""
    return [row["program"] for row in suite.events("stop")]


def wait_for_start(suite, name, count=1):
    """Waits for start number `count` of a component, and returns its event."""
    return wait_until(lambda: starts(suite, name)[count - 1 :], f"start {count} of the {name}")[0]


def arguments_of_start(suite, name, count):
    return wait_for_start(suite, name, count)["argv"][1:]


def kill(suite, name, number=SIGKILL):
    """Kills a component's latest process, waits for its end and returns its id."""
    pid = starts(suite, name)[-1]["pid"]
    os.kill(pid, number)
    wait_until(lambda: system.has_ended(pid), f"the end of the {name}")
    return pid


def kill_until_reaped(suite, name):
    """Kills a component and waits until the supervisor has reaped it."""
    pid = kill(suite, name)
    wait_until(lambda: system.is_gone(pid), f"the supervisor to reap the {name}")


def wait_for_supervisor_pass(suite, watched="hub"):
    """Waits until the supervisor has polled every component at least once more.

    `watched` is killed twice: between its two restarts there is a complete pass.
    """
    for _ in range(2):
        count = len(starts(suite, watched))
        kill(suite, watched)
        wait_for_start(suite, watched, count + 1)


def ends(suite):
    """The components' events after their starts: each event and its program, in order."""
    return [(row["event"], row["program"]) for row in suite.events() if row["event"] != "start"]


def orderly_ends(*programs):
    """The result of `ends` if these programs were stopped one after the other, each once."""
    return [(event, program) for program in programs for event in ("stop", "exit")]
