"""What start, restart and stop take beyond the prescribed waits.

The waits are those of launcher/hub.cpp, supervisor.cpp and child.cpp; a change of one there shows here
as overhead.
"""

import os
import random
import signal
import statistics
import sys
import tempfile
import time
from contextlib import contextmanager
from pathlib import Path

from component_events import starts, wait_for_components, wait_for_start
from components import COMPONENTS
from console import READY
from suite import Ports, Suite

PROBE_INTERVAL = 100  # ms from the end of one probe to the next
POLL_INTERVAL = 400  # ms from the end of one poll of the components to the next
RESTART_PAUSE = 500  # ms from the poll that sees an end to the new start
STOP_PAUSE = 100  # ms from a component's SIGTERM to the second poll
ANSWER_AFTER = (0, 50)  # ms from the hub's start
PROBES = 3  # that are measured by themselves, for each start
KILLS = 5  # of one component in one run; after one more it is left stopped
COLUMNS = (
    "",
    {
        "taken": ("took, ms", 1),
        "waits": ("of it prescribed waits, ms", 0),
        "probes": ("of it the probes' own tool, ms", 1),
        "overhead": ("overhead, ms", 1),
    },
)
AT_ONCE, AFTER = "start, the hub answers at once", f"start, the hub answers after {ANSWER_AFTER[1]} ms"
RESTART, STOP = "restart of a component that was killed", "stop of three components"

# Counts the probes. Its own time is part of each, also of those that are measured by themselves.
COUNTING_CURL = '#!/bin/sh\necho >> "$0.count"\nexec /usr/bin/curl "$@"\n'

# Prints the time and becomes the launcher. What Python ignores is not handed on.
TELL_START = (
    "import os, signal, sys, time;"
    "signal.signal(signal.SIGPIPE, signal.SIG_DFL);"
    "signal.signal(signal.SIGXFSZ, signal.SIG_DFL);"
    "os.write(2, b'%d\\n' % time.monotonic_ns());"
    "os.execv(sys.argv[1], sys.argv[1:])"
)


@contextmanager
def private_suite():
    with tempfile.TemporaryDirectory(prefix="td-") as folder:
        ports = Ports()
        (Path(folder) / "suite").mkdir()
        suite = Suite(Path(folder) / "suite", ports, folder)
        try:
            yield suite
        finally:
            left = suite.close()
            ports.close()
        assert not left, f"left running: {left}"


def start(suite, answer_after=0):
    """Starts the launcher and waits until all components have started; returns the run, the
    milliseconds from its execution to the last component's start, and the number of its probes."""
    count = suite.tool("curl", COUNTING_CURL).with_suffix(".count")
    for record in suite.folder / "events.jsonl", count:
        record.unlink(missing_ok=True)
    for name in COMPONENTS:
        suite.set_behaviour(name, "record=events.jsonl")
    suite.set_behaviour("hub", f"answer-after={answer_after} record=events.jsonl")
    words = ["-IS", "-c", TELL_START, suite.launcher, *suite.ports_options, "--no-browser"]
    run = suite.start(*words, program=sys.executable, start_new_session=True)
    run.wait_for(READY)
    wait_for_components(suite)
    last = max(starts(suite, name)[0]["time_ns"] for name in COMPONENTS)
    taken = (last - int(run.errors.split()[0])) / 1e6
    return run, taken, count.read_text().count("\n")


def stop(run):
    """Stops the suite; returns the milliseconds from the signal to the launcher's end."""
    asked = time.monotonic_ns()
    run.signal(signal.SIGINT)
    os.waitid(os.P_PID, run.pid, os.WEXITED | os.WNOWAIT)
    taken = (time.monotonic_ns() - asked) / 1e6
    assert run.wait() == 0
    return taken


def probe_times(suite):
    """The milliseconds that the probe takes which the launcher runs."""
    command = f"curl -s -m 2 -o /dev/null http://127.0.0.1:{suite.http}/api/health"
    words = ["/usr/bin/env", "no_proxy=127.0.0.1", "/bin/sh", "-c", command]
    taken = []
    for _ in range(PROBES):
        time.sleep(PROBE_INTERVAL / 1000)  # as before those of the launcher: caches cool down
        began = time.monotonic_ns()
        os.waitpid(os.posix_spawn(words[0], words, suite.environment), 0)
        taken.append((time.monotonic_ns() - began) / 1e6)
    return taken


def start_row(started, probe):
    """`started`: the milliseconds and the number of probes of each start; `probe`: milliseconds of one."""
    row = {"taken": [], "waits": [], "probes": [], "overhead": []}
    for taken, probes in started:
        waits = (probes - 1) * PROBE_INTERVAL
        values = {"taken": taken, "waits": waits, "probes": probes * probe}
        values["overhead"] = taken - waits - values["probes"]
        for key, value in values.items():
            row[key].append(value)
    return row


def stop_row(taken):
    """`taken`: the milliseconds of each stop. One that ends before the first poll costs no wait."""
    waits = [STOP_PAUSE * min(each // STOP_PAUSE, len(COMPONENTS)) for each in taken]
    overhead = [each - waited for each, waited in zip(taken, waits)]
    return {"taken": taken, "waits": waits, "overhead": overhead}


def restart_row(suite):
    """Kills the receiver and the sender at random moments between two polls.

    A start comes at the end of a pass of the polls, so the next one comes POLL_INTERVAL after it.
    """
    waits = POLL_INTERVAL + RESTART_PAUSE
    row = {"taken": [], "overhead": []}
    run, *_ = start(suite)
    last = None
    for name in ["receiver"] * KILLS + ["sender"] * KILLS:
        if last is not None:
            killed_at = last + random.randrange(20, POLL_INTERVAL - 20) * 1_000_000
            time.sleep(max(0, killed_at - time.monotonic_ns()) / 1e9)
        count = len(starts(suite, name))
        killed = time.monotonic_ns()
        os.kill(starts(suite, name)[-1]["pid"], signal.SIGKILL)
        started = wait_for_start(suite, name, count + 1)["time_ns"]
        if last is not None:  # otherwise the time of the last poll is not known
            row["taken"].append((started - killed) / 1e6)
            row["overhead"].append((started - last) / 1e6 - waits)
        last = started
    stop(run)
    return row


def measure(rounds):
    started = {delay: [] for delay in ANSWER_AFTER}
    stopped, probes = [], []
    with private_suite() as suite:
        for _ in range(rounds):
            for delay in ANSWER_AFTER:
                run, *found = start(suite, delay)
                started[delay].append(found)
                probes += probe_times(suite)
                stopped.append(stop(run))
        restarted = restart_row(suite)
    probe = statistics.median(probes)
    return {
        AT_ONCE: start_row(started[ANSWER_AFTER[0]], probe),
        AFTER: start_row(started[ANSWER_AFTER[1]], probe),
        RESTART: restarted,
        STOP: stop_row(stopped),
    }
