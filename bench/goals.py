"""What the figures should be, and why those are not that miss it."""

import re
from collections import namedtuple

from sections import ICON

Goal = namedtuple("Goal", "text figure limit digits unit key")
# `figure` and `limit` are called with a function (section, row, column) that gives the middle figure.

LAUNCHER = "launcher align"
WAITS = 5  # ms that a start, restart or stop may take beyond its waits
FLAT = 5  # ms that a start may take longer with much more to do
ICON_TIME = 100  # ms from the launcher's execution until its icon is drawn
ICON_MEMORY = 25 * 1024  # KiB behind the icon


def _faster(column, other, unit, digits):
    return Goal(
        f"pass-through: {'less time' if column == 'time' else 'fewer instructions'} than {other}",
        lambda get: get("pass_through", LAUNCHER, column),
        lambda get: get("pass_through", other, column),
        digits,
        unit,
        f"pass_through {column}",
    )


def _within(text, limit, *where, key, digits=1, unit="ms"):
    return Goal(text, lambda get: get(*where), lambda get: limit, digits, unit, key)


def goals(figures):
    """The goals for the rows that were measured."""
    found = [_faster("time", other, "µs", 0) for other in ("tini", "dumb-init")]
    found += [_faster("instructions", other, "", 0) for other in ("tini", "dumb-init")]
    for section in ("start", "restart", "stop"):
        for row in figures[section]:
            text = f"{section}, {row}: beyond the waits" + (" and probes" * (section == "start"))
            found.append(_within(text, WAITS, section, row, "beyond", key=section))
    found.append(_within("the icon: time to it, drawn", ICON_TIME, "menu", ICON, "drawn", key="icon"))
    where = ("idle", "launcher in the menu bar", "memory")
    found.append(_within("the icon: memory", ICON_MEMORY, *where, key="icon", digits=0, unit="KiB"))
    for row in list(figures["scale"])[1:]:
        found.append(
            _within(f"scale, {row}: more time", FLAT, "scale", row, "more", key=f"scale {row}")
        )
    return found


def is_met(goal, get):
    figure, limit = goal.figure(get), goal.limit(get)
    return figure < limit if goal.key.startswith("pass_through") else figure <= limit


# The causes of what may be missed: a pattern of the goal's key, and the cause.
CAUSES = {
    "pass_through instructions": (
        "The loader looks up every symbol that a program imports before `main`, as immediate binding "
        "demands: some 700 instructions each. The launcher imports several times as many as an init "
        "program, because it is the supervisor as well, and to pass through takes few of them. The "
        "profiles below show the look-ups as `do_lookup_x`, `_dl_lookup_symbol_x`, `strcmp` and "
        "`check_match`. To have fewer would take a second program file."
    ),
    "scale an environment .*": (
        "The kernel copies the environment, page by page, for every program that is executed: at a start "
        "for `env`, `sh`, `curl` and three components. The page faults above and the time in `execve` "
        "below show it. The launcher itself copies nothing of it."
    ),
    "scale .* open descriptors": (
        "The kernel copies the table of descriptors for each of the four processes that the launcher "
        "starts, which then close all but three: the time in `vfork` and `close_range` below. The launcher "
        "itself looks at none of them."
    ),
}


def cause(goal):
    """Why the goal may be missed; None where nothing is known."""
    return next((text for key, text in CAUSES.items() if re.fullmatch(key, goal.key)), None)
