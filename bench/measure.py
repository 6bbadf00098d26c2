"""Measures everything and prints the tables:

    measure.py [--quick] [--write]

--quick takes only as many rounds as show that it works; --write puts the tables into
docs/measurements.md and README.md.
"""

import os
import re
import subprocess
import sys
import time
from datetime import date
from pathlib import Path

import icon
import idle
import pass_through
import phases
from tables import cell, replaced, section_table, table

ROOT = Path(__file__).resolve().parents[1]
PAGE, README = ROOT / "docs/measurements.md", ROOT / "README.md"
PACKAGES = "catatonit curl dumb-init libc6 pasystray qt6-base-dev s6 supervisor tini".split()
SECTIONS = {"pass-through": pass_through, "phases": phases, "idle": idle, "icon": icon}
FULL = {"pass-through": [30], "phases": [12], "idle": [20], "icon": [10, 10]}
QUICK = {"pass-through": [2], "phases": [2], "idle": [1], "icon": [2, 1]}


def machine(load):
    """What a run was measured on and with; `load`: the mean number of running processes before it."""
    name = re.search(r"^model name\s*: (.*)", Path("/proc/cpuinfo").read_text(), re.MULTILINE)
    name = " ".join(name[1].split()) if name else os.uname().machine
    system = re.search(r'^PRETTY_NAME="(.*)"', Path("/etc/os-release").read_text(), re.MULTILINE)[1]
    command = ["dpkg-query", "-W", "-f", "${Package} ${Version}, ", *PACKAGES]
    versions = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    return {
        "date": f"{date.today():%-d %B %Y}",
        "processor": f"{name}, {len(os.sched_getaffinity(0))} cores",
        "system": f"{system}, Linux {os.uname().release.partition('-')[0]}",
        "packages": versions.stdout.removesuffix(", "),
        "load before the run": f"{load:.1f} running processes (mean of a minute)",
    }


def summary(described, figures):
    """The few figures that the README shows."""

    def get(section, row, key):
        return cell(figures[section][row][key], SECTIONS[section].COLUMNS[1][key][1])

    def line(text, section, row, key, *others):
        cells = ", ".join(f"{name} {get(section, name, key)}" for name in others)
        return [text, get(section, row, key), cells]

    passes = ("sh -c", "tini", "dumb-init", "tini-static", "catatonit")
    supervisors = ("supervisord", "s6-svscan")
    rows = [
        line("running `true`, relative to `true` alone", "pass-through", pass_through.ALIGN, "ratio", *passes),
        line("overhead of a start, ms", "phases", phases.AT_ONCE, "overhead"),
        line("overhead of a restart, ms", "phases", phases.RESTART, "overhead"),
        line("overhead of a stop, ms", "phases", phases.STOP, "overhead"),
        line("memory in a terminal, KiB", "idle", idle.TERMINAL, "memory", *supervisors),
        line("wake-ups a second in a terminal", "idle", idle.TERMINAL, "wakes", *supervisors),
        line("memory behind the icon, KiB", "icon", icon.LAUNCHER, "memory", icon.OTHER),
        line("start to icon, ms", "icon", icon.LAUNCHER, "icon", icon.OTHER),
        line("first click to menu, ms", "icon", icon.LAUNCHER, "first", icon.OTHER),
    ]
    where = "{date}, {processor}, {system}".format(**described)
    return f"{where}:\n\n" + table(["", "launcher", "others"], rows)


def write(tables, shown):
    """Puts the tables into the page, and the summary into the README."""
    text = PAGE.read_text()
    for name, made in tables.items():
        text = replaced(text, name, made)
    readme = replaced(README.read_text(), "summary", shown)
    PAGE.write_text(text)
    README.write_text(readme)


def main():
    rounds = QUICK if "--quick" in sys.argv else FULL
    described = machine(os.getloadavg()[0])
    figures, tables = {}, {"machine": table(["", ""], described.items())}
    for name, section in SECTIONS.items():
        began = time.monotonic()
        figures[name] = section.measure(*rounds[name])
        tables[name] = section_table(section.COLUMNS, figures[name])
        print(f"{name}: {time.monotonic() - began:.0f} s", file=sys.stderr)
    shown = summary(described, figures)
    print("\n".join([*tables.values(), shown]))
    if "--write" in sys.argv:
        write(tables, shown)


if __name__ == "__main__":
    main()
