"""Start, restart and stop, against what the prescribed waits take.

The waits are those of launcher/hub.cpp, supervisor.cpp and child.cpp; a change of one there shows here
as time that is not accounted for.
"""

import os
import random
import signal
import statistics
import subprocess
import time

from console import READY
from place import STARTS, now, place, sleep_until, wait_for_end

PROBE_INTERVAL = 100  # ms from the end of one probe to the next
POLL_INTERVAL = 400  # ms from the end of one poll of the components to the next
RESTART_PAUSE = 500  # ms from the poll that sees an end to the new start
STOP_PAUSE = 100  # ms from a component's SIGTERM to the second look at it
READY_AFTER = (0, 50, 250, 1000)  # ms
PROBES = 3  # that are measured by themselves, for each start


def start_up(run, moments):
    """Waits until all components have started; returns the moments until the last one's start."""
    seen = moments.until(*STARTS)
    run.wait_for(READY)
    return seen


def since_execution(seen):
    """The milliseconds from the launcher's execution to the last of the moments."""
    began = next(moment.at for moment in seen if moment.event == "exec")
    return (seen[-1].at - began) / 1e6


def stop(run):
    """Stops the suite; returns the milliseconds from the signal to the launcher's end."""
    asked = now()
    os.kill(run.pid, signal.SIGINT)
    return (wait_for_end(run.process) - asked) / 1e6


def probe_times(suite):
    """The milliseconds that the probe takes which the launcher runs."""
    command = f"curl -s -m 2 -o /dev/null http://127.0.0.1:{suite.http}/api/health"
    words = ["/usr/bin/env", "no_proxy=127.0.0.1", "/bin/sh", "-c", command]
    taken = []
    for _ in range(PROBES):
        time.sleep(PROBE_INTERVAL / 1000)  # as before those of the launcher: caches cool down
        began = now()
        os.waitpid(os.posix_spawn(words[0], words, suite.environment), 0)
        taken.append((now() - began) / 1e6)
    return taken


def refused_probe_times(here):
    """The same of a hub that is not ready."""
    hub = subprocess.Popen(
        [here.suite.component("hub"), "--http-port", str(here.suite.http)],
        env=here.environment(ready_ms=10**8),
    )
    here.moments.until(("td_hub", "start"))
    taken = probe_times(here.suite)
    hub.terminate()
    wait_for_end(hub)
    return taken


def start_rows(starts, answered, refused):
    """A row for each delay of the hub.

    `starts`: by the delay, for each start its number of probes and its milliseconds. The bound is
    what cannot be avoided: the waits between the probes, and the probes.
    """
    rows = {}
    for delay, found in starts.items():
        name = f"after {delay} ms" if delay else "at once"
        row = rows[name] = {"probes": [], "up": [], "waits": [], "tool": [], "beyond": []}
        for probes, up in found:
            waits = (probes - 1) * PROBE_INTERVAL
            tool = (probes - 1) * refused + answered
            values = {"probes": probes, "up": up, "waits": waits, "tool": tool}
            values["beyond"] = up - waits - tool
            for key, value in values.items():
                row[key].append(value)
    return rows


def starts_and_stops(here, rounds):
    """Starts with each delay of the hub, in turns; returns the rows of starts and those of stops."""
    starts = {delay: [] for delay in READY_AFTER}
    stops, answered, refused = [], [], []
    for _ in range(rounds):
        refused += refused_probe_times(here)
        for delay in READY_AFTER:
            run = here.launch(delay)
            seen = start_up(run, here.moments)
            probes = sum(moment.event in ("refused", "answered") for moment in seen)
            starts[delay].append((probes, since_execution(seen)))
            answered += probe_times(here.suite)
            stops.append(stop(run))
    rows = start_rows(starts, statistics.median(answered), statistics.median(refused))
    waits = 3 * STOP_PAUSE
    stopped = {"taken": stops, "waits": [waits], "beyond": [each - waits for each in stops]}
    return rows, {"three willing components": stopped}


def restarts(here, kills):
    """Kills components at random moments between two polls; returns the row of their restarts.

    A start comes at the end of a pass of the polls, so the next one comes POLL_INTERVAL after it.
    """
    row = {"taken": [], "beyond": []}
    run = here.launch()
    last = None
    pids = {moment.program: moment.pid for moment in start_up(run, here.moments)}
    for name in ["td_receiver"] * kills + ["td_sender"] * kills:
        if last is not None:
            sleep_until(last + random.randrange(20, POLL_INTERVAL - 20) * 1_000_000)
        killed = now()
        os.kill(pids[name], signal.SIGKILL)
        started = here.moments.until((name, "start"))[-1]
        pids[name] = started.pid
        if last is not None:  # otherwise nothing tells when the last poll was
            row["taken"].append((started.at - killed) / 1e6)
            row["beyond"].append((started.at - last) / 1e6 - POLL_INTERVAL - RESTART_PAUSE)
        last = started.at
    stop(run)
    return row


def measure(rounds, kills):
    """`kills`: of each of two components; at most 5, after which it is left stopped."""
    with place() as here:
        starts, stops = starts_and_stops(here, rounds)
        restarted = restarts(here, kills)
    return starts, {"a component's death": restarted}, stops
