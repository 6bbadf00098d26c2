"""The tables: which figures they show, and what is said about them."""

from collections import namedtuple

Column = namedtuple("Column", "key heading digits")
Section = namedtuple("Section", "key title heading columns text")

SECTIONS = [
    Section(
        "pass_through",
        "Pass-through",
        "a program that does nothing, started",
        [
            Column("time", "time, µs", 0),
            Column("ratio", "times the bare program", 2),
            Column("faults", "page faults", 0),
            Column("instructions", "instructions", 0),
        ],
        "By Google Benchmark, in turns that are shuffled: from the start of the outermost process to its "
        "end. Page faults are those of all its processes. Instructions are those of the program itself "
        "without what it starts, counted by callgrind, because virtual machines often have no hardware counters; "
        "`env` becomes the program, and the count with it. `sh -c` and `env` need not wait for it. All but the "
        "one row have no controlling terminal: there the launcher starts the program with `vfork`, and with "
        "`fork` where a terminal could suspend it.",
    ),
    Section(
        "start",
        "Start",
        "the hub answers",
        [
            Column("up", "until three components have started, ms", 1),
            Column("probes", "probes", 0),
            Column("waits", "of it prescribed waits", 0),
            Column("tool", "of it the probes' own tool", 1),
            Column("beyond", "the launcher's share", 1),
        ],
        "From the execution of the launcher to the first instruction of the last component. Between two "
        "probes it waits 100 ms. The time of a probe (`env`, `sh` and `curl`) was measured by itself, for "
        "a hub that is ready and one that is not.",
    ),
    Section(
        "restart",
        "Restart",
        "from",
        [
            Column("taken", "to the new start, ms", 0),
            Column("beyond", "beyond the waits, ms", 1),
        ],
        "Components are polled every 400 ms, and a restart comes 500 ms after the poll that sees an end: "
        "500 to 900 ms after a death. The deaths come at random moments, so the first column spreads; the "
        "second is reckoned from the poll.",
    ),
    Section(
        "stop",
        "Stop",
        "of",
        [
            Column("taken", "from SIGINT to the launcher's end, ms", 1),
            Column("waits", "of it prescribed waits", 0),
            Column("beyond", "beyond the waits, ms", 1),
        ],
        "One component after the other gets SIGTERM, and is looked at every 100 ms. These end 5 ms after it.",
    ),
    Section(
        "idle",
        "Idle",
        "supervises three programs",
        [
            Column("memory", "memory (PSS), KiB", 0),
            Column("wakes", "wake-ups a second", 1),
            Column("ticks", "clock ticks (10 ms) of processor time", 0),
            Column("processes", "processes", 0),
            Column("libraries", "libraries in memory", 0),
        ],
        "All at the same time, for 20 s, without what they supervise. Wake-ups are voluntary context "
        "switches of all threads; the launcher's are its polls, every 400 ms. In the menu bar its memory is "
        "Qt's, without what a desktop's theme adds.",
    ),
    Section(
        "menu",
        "The icon and its menu",
        "from",
        [
            Column("shown", "its window is there, ms", 1),
            Column("drawn", "it is drawn, ms", 1),
        ],
        "On a private screen without hardware (Xvfb), with openbox and neither panel nor theme. The start "
        "is the launcher's execution, of a hub that answers at once.",
    ),
    Section(
        "scale",
        "Scale",
        "a start with",
        [
            Column("up", "until three components have started, ms", 1),
            Column("more", "more than usual, ms", 1),
            Column("memory", "the launcher's peak memory, KiB", 0),
            Column("processor", "its processor time, ms", 1),
            Column("faults", "page faults, with the probe's", 0),
        ],
        "With a hub that answers at once. As many descriptors are open as the machine lets a process have, "
        "at most 100,000.",
    ),
    Section(
        "size",
        "Size",
        "program",
        [
            Column("size", "KiB, stripped", 0),
            Column("libraries", "libraries, with the loader", 0),
            Column("symbols", "imported symbols", 0),
            Column("relocations", "relative relocations", 0),
        ],
        "Each without its libraries.",
    ),
]

PASS = "pass_through"
LAUNCHER = "launcher align"
ICON, MENU = "the start, to the icon", "a click, to the menu"
# What, its unit and decimal places, the launcher's figure and those of others.
SUMMARY = [
    (
        "pass-through without a terminal, times the bare program",
        "",
        2,
        (PASS, LAUNCHER, "ratio"),
        {name: (PASS, name, "ratio") for name in ("tini", "dumb-init", "sh -c")},
    ),
    (
        "instructions of its own for that",
        "",
        0,
        (PASS, LAUNCHER, "instructions"),
        {name: (PASS, name, "instructions") for name in ("tini", "dumb-init", "sh -c")},
    ),
    (
        "start of three components, beyond the prescribed waits and the probe",
        "ms",
        1,
        ("start", "at once", "beyond"),
        {},
    ),
    ("stop of three components, beyond the waits", "ms", 1, ("stop", "three willing components", "beyond"), {}),
    (
        "memory while idle, in a terminal",
        "KiB",
        0,
        ("idle", "launcher in a terminal", "memory"),
        {name: ("idle", name, "memory") for name in ("supervisord", "ruby-foreman", "s6-svscan")},
    ),
    ("memory while idle, in the menu bar", "KiB", 0, ("idle", "launcher in the menu bar", "memory"), {}),
    (
        "wake-ups a second while idle",
        "",
        1,
        ("idle", "launcher in a terminal", "wakes"),
        {name: ("idle", name, "wakes") for name in ("supervisord", "ruby-foreman", "s6-svscan")},
    ),
    ("from its start to the icon, drawn", "ms", 1, ("menu", ICON, "drawn"), {}),
    ("from a click to the menu, drawn", "ms", 1, ("menu", MENU, "drawn"), {}),
]
