"""What it costs to run a program through the launcher, and through other programs that do the same."""

import json
import os
import random
import shlex
import shutil
import subprocess
import tempfile
from pathlib import Path

from suite import LAUNCHER

DIRECT, ALIGN = "directly", "launcher align"
RUNS = 20  # of each command in a round
COLUMNS = (
    "`true`, run by",
    {
        "time": ("without a terminal, µs", 0),
        "ratio": ("relative to `true`", 2),
        "terminal_time": ("with a controlling terminal, µs", 0),
        "terminal_ratio": ("relative to `true`", 2),
    },
)


def commands(folder):
    """The command lines by name."""
    program = folder / "td_align"
    shutil.copy2(shutil.which("true"), program)
    shutil.copy2(LAUNCHER, folder / "launcher")
    return {
        DIRECT: [program],
        ALIGN: [folder / "launcher", "align"],
        "sh -c": ["sh", "-c", program],
        "tini": ["tini", "-s", "--", program],  # without -s it prints a warning
        "dumb-init": ["dumb-init", program],
        "tini-static": ["tini-static", "-s", "--", program],
        "catatonit": ["catatonit", "--", program],
    }


def take_times(commands, folder, terminal):
    """The median time of each command in µs, run in random order by hyperfine.

    They run in a new session, which has a controlling terminal if one is given.
    """
    exported = folder / "times.json"
    words = ["hyperfine", "--shell=none", "--style=none", "--warmup=2", f"--runs={RUNS}"]
    words += [f"--export-json={exported}"]
    for name in random.sample(list(commands), len(commands)):
        words += ["--command-name", name, shlex.join(map(str, commands[name]))]
    takes_terminal = ["setsid", "--ctty", "--wait"] if terminal else ["setsid", "--wait"]
    streams = {"stdin": terminal or subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    subprocess.run([*takes_terminal, *words], check=True, **streams)
    results = json.loads(exported.read_text())["results"]
    return {each["command"]: each["median"] * 1e6 for each in results}


def measure(rounds):
    with tempfile.TemporaryDirectory(prefix="td-") as name:
        folder = Path(name)
        made = commands(folder)
        rows = {name: {key: [] for key in COLUMNS[1]} for name in made}
        screen, terminal = os.openpty()
        for _ in range(rounds):
            for prefix, given in ("", None), ("terminal_", terminal):
                times = take_times(made, folder, given)
                for name, row in rows.items():
                    row[prefix + "time"].append(times[name])
                    row[prefix + "ratio"].append(times[name] / times[DIRECT])
        os.close(screen)
        os.close(terminal)
    return rows
