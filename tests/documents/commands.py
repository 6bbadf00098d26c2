"""How the commands of the documents are run, and which are not, with the reason.

A pattern (fnmatch) is compared with "document: command".
"""

from fnmatch import fnmatchcase
from signal import SIGINT

from console import READY

# Kind, reason, patterns. A pattern that fits no command any more fails a test.
NOT_RUN = [
    (
        "root",
        "changes the packages of this machine",
        ["*: apt *", "*: dnf *", "*: scripts/bootstrap *"],
    ),
    ("Mac", "needs a Mac", ["docs/macos-application.md: *", "*: *scripts/mac-app", "*: open *", "*: lsof *"]),
    (
        "login",
        "needs a user's login session with systemd; tests/install/test_services.py checks the units",
        ["*: systemctl *", "*: loginctl *"],
    ),
    (
        "long",
        "builds or tests for minutes. scripts/test does all of it but a release, which CI makes and of "
        "which tests/install/test_release.py tests the script",
        [
            *("*: scripts/test", "*: *scripts/release*", "*: scripts/fresh *", "*: *python3 -m pytest *"),
            *("*: cmake --preset *", "*: cmake --build *", "*: ctest *"),
        ],
    ),
    (
        "machine",
        "is about every program of this machine, or ends it",
        ["*: pkill *", "*: pgrep *"],
    ),
    (
        "ports",
        "takes the default ports without a display; tests/desktop/test_scripts.py runs it on others",
        ["*: *scripts/run --menu-bar*"],
    ),
    (
        "measuring",
        "measures for minutes; tests/bench tests the tables",
        ["*: scripts/bench*"],
    ),
    ("name", "names a tool, without what it would take to run it", ["*: cmake --install"]),
]

# Commands that go on until Ctrl-C: what they print in a terminal, and their status then. The first
# pattern that fits counts. By a component's name the launcher leaves Ctrl-C at its default.
UNTIL_CTRL_C = [
    ("*: *scripts/run --help", None, 0),
    ("*: *scripts/run hub *", "td_hub (stand-in)", -SIGINT),
    ("*: *scripts/run receiver *", "td_receiver (stand-in)", -SIGINT),
    ("*: *scripts/run*", READY, 0),
]

# Commands that ask about a suite that is up.
BESIDE_A_RUN = ["*: curl *", "*: ss *", "*: *scripts/run receiver *"]


def _fits(document, command, patterns):
    return any(fnmatchcase(f"{document}: {command}", pattern) for pattern in patterns)


def is_run(document, command):
    return not any(_fits(document, command, patterns) for _, _, patterns in NOT_RUN)


def is_beside_a_run(document, command):
    return _fits(document, command, BESIDE_A_RUN)


def end_of(document, command):
    """What a command prints before it is to get a Ctrl-C, None for one that ends by itself, and its
    status."""
    fitting = (row[1:] for row in UNTIL_CTRL_C if _fits(document, command, row[:1]))
    return next(fitting, (None, 0))


def patterns():
    """All patterns of the tables above."""
    kinds = [pattern for _, _, patterns in NOT_RUN for pattern in patterns]
    return [*kinds, *(row[0] for row in UNTIL_CTRL_C), *BESIDE_A_RUN]
