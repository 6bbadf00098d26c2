"""What it costs to run a program by the launcher, and by what else passes it through."""

import fcntl
import json
import os
import re
import shutil
import subprocess
import termios

from figures import middle
from place import PROGRAMS, private_folder

LAUNCHER = "launcher align"
IN_TERMINAL = LAUNCHER + ", in a terminal"  # which could suspend what it starts
PROFILED = (LAUNCHER, "tini", "dumb-init")
FUNCTIONS = 8  # of a profile


def contestants(folder, launcher):
    """The command lines by name; each runs the program that does nothing."""
    bare = folder / "td_align"
    shutil.copy2(launcher, folder / "launcher")
    shutil.copy2(PROGRAMS / "bench_bare", bare)
    return {
        "bare": [bare],
        LAUNCHER: [folder / "launcher", "align"],
        IN_TERMINAL: [folder / "launcher", "align"],
        "tini": [shutil.which("tini"), "-s", "--", bare],  # -s: without it, it prints a warning
        "dumb-init": [shutil.which("dumb-init"), bare],
        "env": [shutil.which("env"), bare],
        "sh -c": [shutil.which("sh"), "-c", bare],
    }


def times(commands, repetitions):
    """Times in microseconds and page faults by name, a value for each repetition."""
    options = [f"repetitions={repetitions}", "enable_random_interleaving=true", "format=json"]
    given = [
        f"{name}={'terminal:' if name == IN_TERMINAL else ''}{','.join(map(str, words))}"
        for name, words in commands.items()
    ]
    command = [PROGRAMS / "bench_pass_through", *(f"--benchmark_{each}" for each in options), *given]
    done = run_in_terminal(command)
    rows = {name: {"time": [], "faults": []} for name in commands}
    for run in json.loads(done.stdout)["benchmarks"]:
        if run["run_type"] == "iteration":
            assert not run.get("error_occurred"), run
            row = rows[run["run_name"].partition("/")[0]]
            row["time"].append(run["real_time"] / 1000)
            row["faults"].append(run["faults"])
    return rows


def run_in_terminal(command):
    """Runs a command in a terminal of its own, and returns it with what it printed."""
    screen, terminal = os.openpty()
    try:
        return subprocess.run(
            command,
            check=True,
            stdin=terminal,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            start_new_session=True,
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0),
        )
    finally:
        os.close(screen)
        os.close(terminal)


def profile(command, folder):
    """Callgrind's count of what the program executes itself, without those that it starts.

    Returns the instructions of all and, most first, those of each function.
    """
    out = folder / "callgrind"
    tool = ["valgrind", "--quiet", "--tool=callgrind", f"--callgrind-out-file={out}"]
    subprocess.run([*tool, *command], check=True)
    text = subprocess.check_output(["callgrind_annotate", "--threshold=100", out], text=True)
    out.unlink()
    total = int(re.search(r"^ *([\d,]+) .*PROGRAM TOTALS", text, re.MULTILINE)[1].replace(",", ""))
    return total, functions_of(text)


def functions_of(text):
    """The functions and their instructions in what callgrind_annotate printed, most first."""
    found = {}
    for count, name in re.findall(r"^ *([\d,]+) \([ \d.]+%\)  \S*?:(\S+)", text, re.MULTILINE):
        found[name] = found.get(name, 0) + int(count.replace(",", ""))
    return sorted(found.items(), key=lambda item: -item[1])


def measure(launcher, repetitions):
    with private_folder() as folder:
        commands = contestants(folder, launcher)
        rows = times(commands, repetitions)
        profiles = {}
        for name, row in rows.items():
            row["ratio"] = [value / middle(rows["bare"]["time"]) for value in row["time"]]
            if name not in (IN_TERMINAL, "env"):  # env becomes the program, and the count with it
                total, functions = profile(commands[name], folder)
                row["instructions"] = [total]
                if name in PROFILED:
                    profiles[name] = functions[:FUNCTIONS]
    return rows, profiles
