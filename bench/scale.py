"""Starts with much more of what a start could have to do with, against usual ones."""

import os
import re
import resource
import signal
from pathlib import Path

import psutil
from figures import middle
from phases import since_execution, start_up, stop
from place import place, wait_for_end

USUAL = "as usual"
CALLS = ("vfork", "close_range", "execve")  # of starting processes
DESCRIPTORS = (10, 1000, 100_000)
SETTINGS_SIZE = 1 << 30
SETTINGS_LINE = b" " * 63 + b"\n"
# Left free below the limit on the environment, for what the launcher and its programs add.
RESERVE = 32 * 1024
VARIABLE = 100_000  # bytes; the system allows a single one 131,072


def costs(pid):
    """What a process has needed: at most so much memory in KiB, so many milliseconds of processor time,
    and, with the children that it has waited for, so many page faults."""
    folder = Path(f"/proc/{pid}")
    memory = int((folder / "status").read_text().partition("\nVmHWM:")[2].split()[0])
    processor = int((folder / "schedstat").read_text().split()[0]) / 1e6
    fields = (folder / "stat").read_text().rpartition(")")[2].split()
    return {"memory": memory, "processor": processor, "faults": int(fields[7]) + int(fields[8])}


def full_environment(environment):
    """Variables that fill an environment up to the system's limit."""
    left = os.sysconf("SC_ARG_MAX") - RESERVE
    left -= sum(len(name) + len(value) + 10 for name, value in environment.items())
    return {f"TD_BENCH_{i}": "x" * VARIABLE for i in range(left // (VARIABLE + 32))}


def save_settings(suite, size):
    """A settings file; what it holds beyond the settings are lines of blanks on the disk."""
    suite.save_settings(b"{\n}\n")
    with suite.settings.open("ab") as file:
        block = SETTINGS_LINE * 16384
        while file.tell() < size:
            file.write(block)


def save_sparse_settings(suite, size):
    suite.save_settings(b"{\n}\n")
    os.truncate(suite.settings, size)


def start(here, **options):
    """The milliseconds until all components have started, and what the launcher needed for that."""
    run = here.launch(**options)
    seen = start_up(run, here.moments)
    found = {"up": since_execution(seen), **costs(run.pid)}
    before = next(moment.at for moment in seen if moment.event == "processor")
    found["processor"] -= before / 1e6
    stop(run)
    return found


def system_calls(here, traces, **options):
    """The milliseconds that a start spends in each of CALLS, by strace: of several starts the median.

    vfork() lasts until the new process executes its program, so what that does is part of it.
    """
    found = [traced_start(here, **options) for _ in range(traces)]
    return {call: middle([each[call] for each in found]) for call in CALLS}


def traced_start(here, **options):
    trace = here.suite.folder / "trace"
    tool = ["strace", "-f", "-qq", "-T", "-o", trace, "-e", f"trace={','.join(CALLS)}"]
    run = here.launch(tool=tool, **options)
    start_up(run, here.moments)
    (launcher,) = psutil.Process(run.pid).children()
    launcher.send_signal(signal.SIGINT)
    wait_for_end(run.process)
    return milliseconds_in(trace.read_text(), CALLS)


def milliseconds_in(trace, calls):
    """The milliseconds in each call, from what strace has written."""
    found = {}
    for call in calls:
        lasted = re.findall(rf"^\d+ +(?:<\.\.\. )?{call}[( ].*<(\d+\.\d+)>$", trace, re.MULTILINE)
        found[call] = 1000 * sum(map(float, lasted))
    return found


def most_descriptors():
    """The largest of DESCRIPTORS, or as many as this system lets a process have open beside others."""
    others = 64
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    wanted = max(DESCRIPTORS) + others
    if hard < wanted:
        try:
            resource.setrlimit(resource.RLIMIT_NOFILE, (soft, wanted))
        except (OSError, ValueError):
            return hard - others
    return max(DESCRIPTORS)


def cases(here):
    """What each start has more than usual: by its name what prepares it and its options."""

    def none():
        here.suite.settings.unlink(missing_ok=True)

    found = {USUAL: (none, {})}
    for count in sorted({min(count, most_descriptors()) for count in DESCRIPTORS}):
        found[f"{count:,} open descriptors"] = (none, {"descriptors": count})
    sparse = f"a settings file of {SETTINGS_SIZE >> 30} GiB (sparse)"
    found[sparse] = (lambda: save_sparse_settings(here.suite, SETTINGS_SIZE), {})
    written = "a settings file of 16 MiB of lines"
    found[written] = (lambda: save_settings(here.suite, 16 << 20), {})
    variables = full_environment(here.environment())
    size = sum(map(len, variables.values())) / 1e6
    found[f"an environment of {size:.1f} MB"] = (none, {"variables": variables})
    return found


def measure(rounds, traces):
    """A row for each case, and for each the milliseconds in the system calls of starting processes."""
    with place() as here:
        rows = {}
        made = cases(here)
        for _ in range(rounds):
            for name, (prepare, options) in made.items():
                prepare()
                for column, value in start(here, **options).items():
                    rows.setdefault(name, {}).setdefault(column, []).append(value)
        calls = {}
        for name, (prepare, options) in made.items():
            prepare()
            calls[name] = system_calls(here, traces, **options)
        for name, row in rows.items():
            row["more"] = [time - usual for time, usual in zip(row["up"], rows[USUAL]["up"])]
        return rows, calls
