"""Replacements for curl, with which the launcher probes the hub."""

import shutil

import system
from deadline import wait_until
from suite import RECORDING_TOOL

CURL = shutil.which("curl")

# Waits until the hub that recorded exit number {count} is a zombie: dead, and not reaped yet.
_WAIT_FOR_HUB_EXIT = """#!/bin/sh
exits() {{ grep '"event":"exit","program":"td_hub"' "${{0%/*}}/../events.jsonl" 2>/dev/null; }}
until [ "$(exits | wc -l)" -ge {count} ]; do sleep 0.01; done
pid=$(exits | sed -n '{count}s/.*"pid":\\([0-9]*\\).*/\\1/p')
until {is_zombie}; do sleep 0.01; done
"""


def _wait_for_hub_exit(count):
    return _WAIT_FOR_HUB_EXIT.format(count=count, is_zombie=system.IS_ZOMBIE)


def succeed_after_hub_exit(suite):
    """Every probe waits for the first exit of a recording hub, and succeeds."""
    suite.tool("curl", _wait_for_hub_exit(1))


def probe_after_hub_exit(suite, count=1):
    """Every probe waits for exit number `count` of a recording hub and then probes the port.

    So another owner of the port answers, and the hub that failed can no longer be examined.
    """
    suite.tool("curl", _wait_for_hub_exit(count) + f'exec {CURL} "$@"\n')


def record_and_probe(suite):
    suite.tool("curl", RECORDING_TOOL + f'exec {CURL} "$@"\n')


def record_and_fail(suite):
    """Every probe is recorded and fails at once, as curl does when the connection is refused."""
    suite.tool("curl", RECORDING_TOOL + "exit 7\n")


def record_statuses(suite):
    """Every probe is made, and its exit status is recorded for `statuses`."""
    suite.tool("curl", f"""#!/bin/sh
{CURL} "$@"
status=$?
echo $status >> "$0.statuses"
exit $status
""")


def statuses(suite):
    """The exit statuses of the probes so far, as text."""
    path = suite.bin / "curl.statuses"
    return path.read_text().splitlines() if path.exists() else []


def wait_for_statuses(suite, status, count, has_ended):
    """Waits until `count` more probes have ended with that status, or until `has_ended()`."""
    count += statuses(suite).count(status)
    wait_until(
        lambda: has_ended() or statuses(suite).count(status) >= count,
        f"{count} probes with status {status}",
    )
