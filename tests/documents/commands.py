"""How to run the commands of the documents, and which ones not to run, with the reason.

Patterns (fnmatch) are matched against "document: command".
"""

from fnmatch import fnmatchcase
from signal import SIGINT

from console import READY

# Kind, reason, patterns. A pattern that no longer matches a command fails a test.
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
        ["*: systemctl *", "*: loginctl *", "*: journalctl *"],
    ),
    (
        "long",
        "builds or tests for minutes. scripts/test runs all of these except a release, which CI makes, and the "
        "soak; tests/install/test_release.py and tests/chaos/test_soak.py test their scripts",
        [
            *("*: scripts/test", "*: *scripts/release*", "*: scripts/fresh *", "*: *python3 -m pytest *"),
            *("*: cmake --preset *", "*: cmake --build *", "*: ctest *", "*: scripts/soak *"),
        ],
    ),
    (
        "machine",
        "affects or lists all programs of this machine",
        ["*: pkill *", "*: pgrep *"],
    ),
    (
        "ports",
        "uses the default ports without a display; tests/desktop/test_scripts.py runs it on others",
        ["*: *scripts/run --menu-bar*"],
    ),
    (
        "measuring",
        "measures for minutes; tests/bench tests the tables",
        ["*: scripts/bench*"],
    ),
    ("name", "names a tool, without the arguments to run it", ["*: cmake --install"]),
]

# Commands that run until Ctrl-C: what they print before, and their status then. The first pattern that
# matches counts. A launcher of one component leaves SIGINT at its default.
UNTIL_CTRL_C = [
    ("*: *scripts/run --help", None, 0),
    ("*: *scripts/run hub *", "td_hub (stand-in)", -SIGINT),
    ("*: *scripts/run receiver *", "td_receiver (stand-in)", -SIGINT),
    ("*: *scripts/run*", READY, 0),
]

# Commands that need a running suite.
BESIDE_A_RUN = ["*: curl *", "*: ss *", "*: *scripts/run receiver *"]


def _matches(document, command, patterns):
    return any(fnmatchcase(f"{document}: {command}", pattern) for pattern in patterns)


def is_run(document, command):
    return not any(_matches(document, command, patterns) for _, _, patterns in NOT_RUN)


def is_beside_a_run(document, command):
    return _matches(document, command, BESIDE_A_RUN)


def end_of(document, command):
    """What a command prints before Ctrl-C is to be pressed (None: it ends by itself), and its status."""
    matching = (row[1:] for row in UNTIL_CTRL_C if _matches(document, command, row[:1]))
    return next(matching, (None, 0))


def patterns():
    """All patterns of the tables above."""
    kinds = [pattern for _, _, patterns in NOT_RUN for pattern in patterns]
    return [*kinds, *(row[0] for row in UNTIL_CTRL_C), *BESIDE_A_RUN]
