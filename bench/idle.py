"""What idle supervisors cost, all of them side by side."""

import subprocess
import tempfile
import time
from contextlib import ExitStack, contextmanager
from pathlib import Path

import psutil
from deadline import wait_until
from phases import private_suite, start

PROGRAMS = 3
SETTLE = 2  # seconds after the last start, before the time is taken
TERMINAL = "launcher in a terminal"
COLUMNS = (
    "supervises three programs",
    {
        "memory": ("memory (PSS), KiB", 0),
        "wakes": ("wake-ups a second", 1),
        "processes": ("processes", 0),
        "libraries": ("libraries mapped", 0),
    },
)


def field(pid, file, name):
    """The first number after a name in a file of a process or of a thread (PID/task/TID)."""
    return int(Path(f"/proc/{pid}/{file}").read_text().partition(f"\n{name}:")[2].split()[0])


def memory(pid):
    """Proportional memory in KiB."""
    return field(pid, "smaps_rollup", "Pss")


def wakes(pid):
    """How often the threads of a process have waited."""
    threads = psutil.Process(pid).threads()
    return sum(field(f"{pid}/task/{each.id}", "status", "voluntary_ctxt_switches") for each in threads)


def libraries(pid):
    """The number of libraries that a process has mapped."""
    paths = {mapped.path for mapped in psutil.Process(pid).memory_maps()}
    return sum(".so" in Path(path).name for path in paths)


def observe(pids, seconds):
    """A row of the table for each list of processes, by name; all are observed at the same time."""
    before = {name: sum(map(wakes, each)) for name, each in pids.items()}
    began = time.monotonic()
    time.sleep(seconds)
    lasted = time.monotonic() - began
    return {
        name: {
            "memory": [sum(map(memory, each))],
            "wakes": [(sum(map(wakes, each)) - before[name]) / lasted],
            "processes": [len(each)],
            "libraries": [libraries(each[0])],
        }
        for name, each in pids.items()
    }


def supervisord(folder):
    configuration = f"[supervisord]\nnodaemon=true\nlogfile=/dev/null\npidfile={folder}/pid\n"
    for number in range(PROGRAMS):
        configuration += f"[program:{number}]\ncommand=sleep infinity\n"
        configuration += "stdout_logfile=NONE\nstderr_logfile=NONE\n"
    (folder / "supervisord.conf").write_text(configuration)
    return ["supervisord", "-c", folder / "supervisord.conf"]


def s6(folder):
    for number in range(PROGRAMS):
        service = folder / "services" / str(number)
        service.mkdir(parents=True)
        (service / "run").write_text("#!/bin/sh\nexec sleep infinity\n")
        (service / "run").chmod(0o755)
    return ["s6-svscan", folder / "services"]


@contextmanager
def supervisor(make):
    """Runs another supervisor and ends all that it has started; yields the ids of its own processes."""
    with tempfile.TemporaryDirectory(prefix="td-") as name:
        silent = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        process = subprocess.Popen([str(word) for word in make(Path(name))], cwd=name, **silent)
        top = psutil.Process(process.pid)
        try:
            yield wait_until(lambda: own_processes(top), f"the programs of {make.__name__}")
        finally:
            started = top.children(recursive=True)
            process.terminate()
            process.wait()
            for each in psutil.wait_procs(started, timeout=5)[1]:
                each.kill()
            psutil.wait_procs(started)


def own_processes(top):
    """The ids of a supervisor's processes without its programs; None before they all run."""
    tree = [top, *top.children(recursive=True)]
    own = [process.pid for process in tree if process.name() != "sleep"]
    return own if len(tree) - len(own) == PROGRAMS else None


def measure(seconds):
    with ExitStack() as stack:
        suite = stack.enter_context(private_suite())
        run, *_ = start(suite)
        pids = {TERMINAL: [run.pid]}
        pids["supervisord"] = stack.enter_context(supervisor(supervisord))
        pids["s6-svscan"] = stack.enter_context(supervisor(s6))
        time.sleep(SETTLE)
        rows = observe(pids, seconds)
        run.stop()
        return rows
