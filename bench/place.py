"""Where the launcher is measured: a private folder in which the components do as little as possible.

What drives the launcher there is what the tests drive it with, in tests/system and tests/desktop.
"""

import os
import select
import shutil
import tempfile
import time
from collections import namedtuple
from contextlib import contextmanager
from pathlib import Path

from components import ALL_COMPONENTS, COMPONENTS
from deadline import DEADLINE
from suite import Ports, Suite

ROOT = Path(__file__).resolve().parents[1]
BUILD = ROOT / "build"
PROGRAMS = BUILD / "bench"  # the benchmark's own

STARTS = {(f"td_{name}", "start") for name in COMPONENTS}


def now():
    """The clock of the moments, in nanoseconds."""
    return time.monotonic_ns()


def put_components(suite):
    """Replaces a suite's stand-ins by the benchmark's component."""
    for name in ALL_COMPONENTS:
        suite.component(name).unlink()
        shutil.copy2(PROGRAMS / "bench_component", suite.component(name))


Moment = namedtuple("Moment", "program event at pid")  # `at` in nanoseconds


class Moments:
    """What the programs tell of themselves: see moments.h."""

    def __init__(self, folder):
        self.path = folder / "moments"
        os.mkfifo(self.path)
        self._fifo = os.open(self.path, os.O_RDWR)  # for writing too: it never ends
        self._text = b""

    def next(self):
        """Waits for the next moment."""
        while b"\n" not in self._text:
            assert self._read(DEADLINE), "nothing more happened"
        line, _, self._text = self._text.partition(b"\n")
        program, event, at, pid = line.decode().split()
        return Moment(program, event, int(at), int(pid))

    def _read(self, seconds):
        ready, _, _ = select.select([self._fifo], [], [], seconds)
        if ready:
            self._text += os.read(self._fifo, 65536)
        return ready

    def until(self, *wanted):
        """Waits until each of the given (program, event) has come; returns all that came."""
        missing, seen = set(wanted), []
        while missing:
            seen.append(self.next())
            missing.discard((seen[-1].program, seen[-1].event))
        return seen

    def forget(self):
        """Drops what has come; of processes that have ended, that is all."""
        while self._read(0):
            self._text = b""

    def close(self):
        os.close(self._fifo)


class Place:
    """`suite` is the launcher's folder, `moments` what its components tell."""

    def __init__(self, folder):
        self._ports = Ports()
        self.suite = Suite(folder / "suite", self._ports, folder)
        put_components(self.suite)
        self.moments = Moments(folder)

    def tells(self, ready_ms=0):
        """The variables of components that tell, and of a hub that is ready so many milliseconds after
        its start."""
        return {"TD_BENCH_MOMENTS": str(self.moments.path), "TD_BENCH_READY_MS": str(ready_ms)}

    def environment(self, ready_ms=0):
        return {**self.suite.environment, **self.tells(ready_ms)}

    def launch(self, ready_ms=0, descriptors=0, variables=None, tool=(), **options):
        """Starts the launcher in a terminal, with so many more descriptors open; run by a tool if one
        is given. The terminal does not control it, and nor does the one that this is run in. More
        options are those of `Run`."""
        self.moments.forget()
        program, *words = [*tool, PROGRAMS / "bench_launch", descriptors, self.suite.launcher]
        return self.suite.start(
            *words,
            *self.suite.ports_options,
            "--no-browser",
            program=program,
            start_new_session=True,
            **{"environment": {**self.environment(ready_ms), **(variables or {})}, **options},
        )

    def close(self):
        left = self.suite.close()
        self.moments.close()
        self._ports.close()
        assert not left, f"left running: {left}"


@contextmanager
def private_folder():
    """Its name has neither blanks nor commas."""
    with tempfile.TemporaryDirectory(prefix="td-") as name:
        yield Path(name)


@contextmanager
def place():
    with private_folder() as folder:
        (folder / "suite").mkdir()
        made = Place(folder)
        try:
            yield made
        finally:
            made.close()


def wait_for_end(process):
    """Waits for the end of a child process; returns its moment."""
    handle = os.pidfd_open(process.pid)
    try:
        ready, _, _ = select.select([handle], [], [], DEADLINE)
        ended = now()
        assert ready, "it did not end"
    finally:
        os.close(handle)
    process.wait()
    return ended


def sleep_until(moment):
    """Returns at a moment of the clock, or at once when that has passed."""
    time.sleep(max(0, moment - now()) / 1e9)
