"""Takes all measurements once and writes them to a file:

    measure.py [--quick] FILE

--quick takes each with as few rounds as will show that it works.
"""

import json
import sys
import time

import idle
import machine
import menu
import pass_through
import phases
import scale
import size
from place import BUILD

# Rounds of each part, chosen for three minutes in all.
FULL = {"repetitions": 60, "starts": 12, "kills": 5, "idle": 20, "menus": 20, "scale": 8, "traces": 3}
QUICK = {"repetitions": 3, "starts": 1, "kills": 2, "idle": 1, "menus": 2, "scale": 1, "traces": 1}


def measure(rounds):
    """The sections of the tables: figures by row and column, each with its values."""
    found = {}

    def part(name, take):
        began = time.monotonic()
        print(f"{name}...", end=" ", flush=True)
        made = take()
        print(f"{time.monotonic() - began:.0f} s", flush=True)
        return made

    found["pass_through"], profiles = part(
        "Pass-through", lambda: pass_through.measure(BUILD / "launcher", rounds["repetitions"])
    )
    found["start"], found["restart"], found["stop"] = part(
        "Start, restart, stop", lambda: phases.measure(rounds["starts"], rounds["kills"])
    )
    found["idle"] = part("Idle", lambda: idle.measure(rounds["idle"]))
    found["menu"] = part("Menu", lambda: menu.measure(rounds["starts"], rounds["menus"]))
    found["scale"], calls = part("Scale", lambda: scale.measure(rounds["scale"], rounds["traces"]))
    found["size"] = part("Size", size.measure)
    return found, {"functions": profiles, "calls": calls}


def main():
    *options, path = sys.argv[1:]
    rounds = QUICK if options == ["--quick"] else FULL
    described = machine.describe()
    load = [machine.load()]
    figures, profiles = measure(rounds)
    load.append(machine.load())
    run = {"machine": described, "load": load, "rounds": rounds}
    with open(path, "w") as file:
        json.dump({**run, "figures": figures, **profiles}, file, indent=1)


if __name__ == "__main__":
    main()
