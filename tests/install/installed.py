"""An installed launcher, started by the name that users start it by."""

import json
import os
import subprocess

import components
import psutil
from components import COMPONENTS
from console import READY
from deadline import wait_until
from run import Run

PROGRAMS = ("launcher", *components.PROGRAMS)
# What looks for a desktop or would show something on one.
DESKTOP = ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "XDG_DATA_HOME", "XDG_DATA_DIRS")


def install(build, prefix, *options, **environment):
    """Runs "cmake --install"; returns what it printed."""
    command = ["cmake", "--install", build, "--prefix", prefix, *options]
    return subprocess.run(
        command, env={**os.environ, **environment}, check=True, capture_output=True, text=True
    ).stdout


def files_of(folder):
    """The paths of everything below a folder that is no folder itself."""
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}


class Tree:
    """What is installed below `prefix`; its user has the folder `home`. As `Run` takes it."""

    def __init__(self, prefix, home, ports):
        self.prefix = prefix
        self.home = self.folder = home
        home.mkdir(exist_ok=True)
        self.http, self.udp = ports.free(), ports.free()
        self.programs = prefix / "libexec/tandrel"
        self.launcher = prefix / "bin/tandrel"
        self.runs = []

    @property
    def environment(self):
        environment = {name: value for name, value in os.environ.items() if name not in DESKTOP}
        environment["HOME"] = str(self.home)
        environment["PATH"] = f"{self.prefix / 'bin'}:{os.environ['PATH']}"
        return environment

    @property
    def ports_options(self):
        return ["--no-browser", "--http-port", str(self.http), "--udp-port", str(self.udp)]

    def record(self):
        """Makes the stand-ins record their starts and ends for `events`."""
        for name in PROGRAMS[1:]:
            path = self.programs / f"{name}.behaviour"
            path.write_text("record=events.jsonl\n")

    def events(self, event):
        """The programs that recorded the event, in order."""
        path = self.programs / "events.jsonl"
        complete, _, _ = path.read_text().rpartition("\n") if path.exists() else ("", "", "")
        rows = [json.loads(line) for line in complete.splitlines()]
        return [row["program"] for row in rows if row["event"] == event]

    def wait_for_starts(self, *names):
        """Waits until the named components, by default the suite's, have recorded their starts."""
        for name in names or COMPONENTS:
            wait_until(lambda: f"td_{name}" in self.events("start"), f"the {name}'s start")

    def start(self, *arguments, **options):
        run = Run(self, arguments, **options)
        self.runs.append(run)
        return run

    def start_up(self, *arguments, **options):
        """Starts the suite and waits until it is up."""
        run = self.start(*self.ports_options, *arguments, **options)
        run.wait_for(READY)
        return run

    def processes(self):
        """The live processes of the tree's programs."""
        found = []
        for process in psutil.process_iter():
            try:
                command = process.cmdline()
                gone = process.status() == psutil.STATUS_ZOMBIE
            except (psutil.NoSuchProcess, psutil.AccessDenied):
                continue
            if command and not gone and command[0].startswith(f"{self.programs}/"):
                found.append(process)
        return found

    def close(self):
        """Ends every run and process that is left; returns those processes."""
        for run in self.runs:
            run.close()
        left = self.processes()
        for process in left:
            process.kill()
        return left
