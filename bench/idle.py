"""What supervisors cost that have nothing to do, all of them side by side."""

import os
import shutil
import subprocess
import time
from contextlib import ExitStack, contextmanager
from pathlib import Path

import psutil
from console import READY
from deadline import wait_until
from menu import bare_screen, behind_icon
from place import PROGRAMS, place, private_folder

COMPONENTS = 3
SETTLE = 3  # seconds after the last start, before the time is taken

SUPERVISORD = """[supervisord]
nodaemon=true
logfile=/dev/null
pidfile={folder}/supervisord.pid
user={user}
"""
SUPERVISED = """[program:{name}]
command={program}
"""


class Contestant:
    """A supervisor by its process, and those of its processes that are not supervised programs."""

    def __init__(self, pid, components=COMPONENTS):
        self._top = psutil.Process(pid)
        self._components = components

    def has_all(self):
        names = [process.name() for process in self._tree()]
        return sum(name.startswith("td_") for name in names) == self._components

    def _tree(self):
        return [self._top, *self._top.children(recursive=True)]

    def pids(self):
        return [process.pid for process in self._tree() if not process.name().startswith("td_")]

    def libraries(self):
        """The number of libraries in the memory of the first process."""
        maps = Path(f"/proc/{self._top.pid}/maps").read_text()
        return len({line.split()[-1] for line in maps.splitlines() if ".so" in line})


def counts(pids):
    """Proportional memory in KiB, wake-ups and clock ticks of some processes."""
    memory = wakes = ticks = 0
    for pid in pids:
        rollup = Path(f"/proc/{pid}/smaps_rollup").read_text()
        memory += int(rollup.partition("\nPss:")[2].split()[0])
        for status in Path(f"/proc/{pid}/task").glob("*/status"):
            text = status.read_text()
            wakes += int(text.partition("\nvoluntary_ctxt_switches:")[2].split()[0])
        fields = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
        ticks += int(fields[11]) + int(fields[12])
    return memory, wakes, ticks


def programs(folder):
    """The supervised programs, in a folder of their own."""
    folder.mkdir()
    made = [folder / f"td_{number}" for number in range(COMPONENTS)]
    for path in made:
        shutil.copy2(PROGRAMS / "bench_component", path)
    return made


def supervisord(folder):
    config = folder / "supervisord.conf"
    user = os.environ.get("USER", "root")
    text = SUPERVISORD.format(folder=folder, user=user)
    for path in programs(folder / "programs"):
        text += SUPERVISED.format(name=path.name, program=path)
    config.write_text(text)
    return ["supervisord", "-c", config]


def foreman(folder):
    lines = (f"{path.name}: {path}\n" for path in programs(folder / "programs"))
    (folder / "Procfile").write_text("".join(lines))
    return ["foreman", "start", "-f", folder / "Procfile"]


def s6(folder):
    for path in programs(folder / "programs"):
        service = folder / "services" / path.name
        service.mkdir(parents=True)
        (service / "run").write_text(f"#!/bin/sh\nexec {path}\n")
        (service / "run").chmod(0o755)
    return ["s6-svscan", folder / "services"]


def tini(folder):
    return ["tini", "-s", "--", programs(folder / "programs")[0]]


def dumb_init(folder):
    return ["dumb-init", programs(folder / "programs")[0]]


OTHERS = {  # the command line and the number of programs that it supervises
    "supervisord": (supervisord, COMPONENTS),
    "ruby-foreman": (foreman, COMPONENTS),
    "s6-svscan": (s6, COMPONENTS),
    "tini (one program)": (tini, 1),
    "dumb-init (one program)": (dumb_init, 1),
}


@contextmanager
def other(name):
    """Another supervisor, ended with what it has started."""
    make, components = OTHERS[name]
    with private_folder() as folder:
        silent = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        process = subprocess.Popen([str(word) for word in make(folder)], cwd=folder, **silent)
        tree = psutil.Process(process.pid)
        try:
            yield Contestant(process.pid, components)
        finally:
            started = tree.children(recursive=True)
            process.terminate()
            process.wait()
            for each in psutil.wait_procs(started, timeout=5)[1]:
                each.kill()
            psutil.wait_procs(started)


@contextmanager
def console():
    with place() as here:
        run = here.launch()
        run.wait_for(READY)
        yield Contestant(run.pid)
        run.stop()


@contextmanager
def menu_bar():
    with bare_screen() as screen, behind_icon(screen) as icon:
        yield Contestant(icon.run.pid)


def measure(seconds):
    with ExitStack() as stack:
        found = {
            "launcher in a terminal": stack.enter_context(console()),
            "launcher in the menu bar": stack.enter_context(menu_bar()),
        }
        for name in OTHERS:
            found[name] = stack.enter_context(other(name))
        wait_until(lambda: all(each.has_all() for each in found.values()), "all programs")
        time.sleep(SETTLE)
        pids = {name: each.pids() for name, each in found.items()}
        before = {name: counts(each) for name, each in pids.items()}
        began = time.monotonic()
        time.sleep(seconds)
        lasted = time.monotonic() - began
        after = {name: counts(each) for name, each in pids.items()}
        return {
            name: {
                "processes": [len(pids[name])],
                "memory": [after[name][0]],
                "wakes": [(after[name][1] - before[name][1]) / lasted],
                "ticks": [after[name][2] - before[name][2]],
                "libraries": [found[name].libraries()],
            }
            for name in found
        }
