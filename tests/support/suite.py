"""The launcher and its components in a private folder, driven and observed from outside.

A `Suite` is the folder; `Suite.start` runs the launcher in it with pipes or with a terminal. All
waiting is for events; a test fails when one does not come within `deadline.DEADLINE`.
"""

import json
import os
import random
import shutil
import signal
import socket
import threading
from pathlib import Path

import psutil
import system
from components import ALL_COMPONENTS
from console import READY
from deadline import wait_until
from run import Run

_BUILDS = Path(__file__).parents[2] / "build"


def _folder(variable, default):
    return Path(os.environ.get(variable, default)).resolve()


# What users run; a variable names the launcher of another build.
BUILD = _folder("TD_BUILD_DIR", _BUILDS)
# The stand-ins are the same for all builds of the launcher, so sanitized builds share one set.
STAND_INS = _folder("TD_STANDIN_DIR", _BUILDS)
# The scripted interfaces are built with the tests, unlike the launcher that users run.
MODULES = _folder("TD_MODULE_DIR", _BUILDS / "dev/scripted")

LAUNCHER = Path(system.LAUNCHER.format(build=BUILD, modules=MODULES))

NEVER = "600000"  # ms, for behaviours: longer than any test

RECORDING_TOOL = """#!/bin/sh
printf '%s\\0' "$#" "$@" >> "$0.calls"
"""


class Ports:
    """Free ports, each reserved for one test by keeping a second port bound until the test's end.

    They are below the ephemeral range.
    """

    _PORTS = range(10000, 21000)
    _DISTANCE = len(_PORTS)  # from a port to the one that reserves it

    def __init__(self):
        self._holds = []

    def free(self):
        while True:
            port = random.choice(self._PORTS)
            hold = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
            try:
                hold.bind(("127.0.0.1", port + self._DISTANCE))
            except OSError:
                hold.close()
                continue
            self._holds.append(hold)
            if _bindable(port):
                return port

    def close(self):
        for hold in self._holds:
            hold.close()


def _bindable(port):
    for kind in (socket.SOCK_STREAM, socket.SOCK_DGRAM):
        with socket.socket(socket.AF_INET, kind) as probe:
            try:
                probe.bind(("", port))
            except OSError:
                return False
    return True


class Suite:
    """A private folder with the launcher, the stand-ins, and tools in `bin`, which comes first in PATH.

    `open`, `xdg-open`, `osascript`, `zenity`, `kdialog` and `xmessage` only record their calls.
    """

    def __init__(self, folder, ports, shared):
        self.folder = Path(folder)
        self.shared = Path(shared)  # a folder that all tests of a session share
        self.ports = ports
        self.http = ports.free()
        self.udp = ports.free()
        self.bin = self.folder / "bin"
        self.home = self.folder / "home"
        self.runs = []
        self.bin.mkdir()
        self.home.mkdir()
        shutil.copy2(LAUNCHER, self.folder / "launcher")
        for name in ALL_COMPONENTS:
            self.install(name)
        for tool in ("open", "xdg-open", "osascript", "zenity", "kdialog", "xmessage"):
            self.tool(tool)

    def install(self, name):
        """Puts a stand-in into the folder, where there must be none."""
        os.link(self._stand_in(name), self.component(name))

    def _stand_in(self, name):
        # Copied once per session: a hard link needs a source on the same file system.
        source = STAND_INS / f"td_{name}"
        copy = self.shared / f"td_{name}.copy"
        if not copy.exists():
            staging = self.shared / f"td_{name}.{os.getpid()}.{threading.get_ident()}"
            shutil.copy2(source, staging)
            os.replace(staging, copy)
        return copy

    @property
    def launcher(self):
        return self.folder / "launcher"

    @property
    def settings(self):
        return self.folder / "config" / "launcher.json"

    @property
    def environment(self):
        environment = dict(os.environ)
        environment.pop("DISPLAY", None)
        environment.pop("TANDREL_SUITE_DIR", None)
        environment["HOME"] = str(self.home)
        environment["PATH"] = f"{self.bin}:{os.environ['PATH']}"
        return environment

    @property
    def ports_options(self):
        return ["--http-port", str(self.http), "--udp-port", str(self.udp)]

    def component(self, name):
        return self.folder / f"td_{name}"

    def sealed_environment(self, *tools):
        """An environment whose PATH is only `bin`, with links to the named tools.

        All other tools are removed; `tool` can add new ones.
        """
        for path in self.bin.iterdir():
            path.unlink()
        for name in tools:
            (self.bin / name).symlink_to(shutil.which(name))
        return {**self.environment, "PATH": str(self.bin)}

    def save_settings(self, text):
        self.settings.parent.mkdir(exist_ok=True)
        self.settings.write_bytes(text if isinstance(text, bytes) else text.encode())

    def set_behaviour(self, name, words):
        """Sets a component's faults from its next start on, for example "exit-at-once"."""
        (self.folder / f"td_{name}.behaviour").write_text(words + "\n")

    def record(self, *names):
        """Makes the named components (by default all) record their events from their next start on."""
        for name in names or ALL_COMPONENTS:
            path = self.folder / f"td_{name}.behaviour"
            words = path.read_text() if path.exists() else ""
            path.write_text(words + " record=events.jsonl\n")

    def events(self, event=None, program=None):
        """The events that components have recorded, in order: dictionaries with "event" and "program"."""
        path = self.folder / "events.jsonl"
        if not path.exists():
            return []
        complete, _, _ = path.read_text().rpartition("\n")  # the last line may be incomplete
        rows = [json.loads(line) for line in complete.splitlines()]
        return [
            row
            for row in rows
            if (event is None or row["event"] == event)
            and (program is None or row["program"] == program)
        ]

    def script(self, path, text):
        """Writes an executable script; relative paths are in the suite's folder."""
        path = self.folder / path
        # Written under another name: a fork in another thread may keep the descriptor for a moment, and
        # then executing the file would fail with "text file busy".
        staging = path.with_name(path.name + ".new")
        staging.write_text(text)
        staging.chmod(0o755)
        path.unlink(missing_ok=True)
        staging.rename(path)
        return path

    def tool(self, name, text=RECORDING_TOOL):
        """Puts a tool first on the PATH; by default one that records its calls."""
        return self.script(self.bin / name, text)

    def calls(self, tool):
        """The argument lists of the calls of a recording tool, as bytes."""
        path = self.bin / f"{tool}.calls"
        fields = path.read_bytes().split(b"\0")[:-1] if path.exists() else []
        calls = []
        while fields:
            count = int(fields.pop(0))
            calls.append(fields[:count])
            del fields[:count]
        return calls

    def forget_calls(self, tool):
        (self.bin / f"{tool}.calls").unlink(missing_ok=True)

    def start(self, *arguments, **options):
        """Starts the launcher; see `Run`."""
        run = Run(self, [str(argument) for argument in arguments], **options)
        self.runs.append(run)
        return run

    def start_up(self, *arguments, **options):
        """Starts an all-in-one run on this suite's ports and waits until it is ready."""
        run = self.start(*self.ports_options, *arguments, **options)
        run.wait_for(READY)
        return run

    def processes(self, name=None):
        """The live processes of the suite's programs, or of one component."""
        wanted = str(self.component(name)) if name else str(self.folder) + "/"
        found = []
        for process in psutil.process_iter():
            try:
                command = process.cmdline()
                if process.status() != psutil.STATUS_ZOMBIE and any(
                    part == wanted if name else part.startswith(wanted) for part in command[:3]
                ):
                    found.append(process)
            except (psutil.NoSuchProcess, psutil.AccessDenied):
                continue
        return found

    def process(self, name):
        """Waits until a component has exactly one process, and returns it."""

        def one():
            found = self.processes(name)
            return found if len(found) == 1 else None

        return wait_until(one, f"one process of the {name}")[0]

    def kill(self, name, number=signal.SIGKILL):
        """Kills a component and returns its process id."""
        pid = self.process(name).pid
        os.kill(pid, number)
        return pid

    def wait_for_restart(self, name, old):
        """Waits until a component has a process other than `old`, and returns its id."""
        return wait_until(
            lambda: next((p.pid for p in self.processes(name) if p.pid != old), None),
            f"a new process of the {name}",
        )

    def close(self):
        """Ends every run and process that is left; returns those processes."""
        for run in self.runs:
            run.close()
        left = self.processes()
        for process in left:
            try:
                process.kill()
            except psutil.NoSuchProcess:
                pass
        return left
