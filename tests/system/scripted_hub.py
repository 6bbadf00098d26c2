"""A hub of a few shell lines, for tests of the settings and arguments that a hub is started with.

It binds no port, so every port number can be tried, and a run takes a few milliseconds.
"""

import shlex

import system

DEFAULT_PORTS = ("4466", "4465")  # the dashboard port and the control port, as text
SAVED = b'{"http_port": 5000, "udp_port": 5001}'
SAVED_PORTS = ("5000", "5001")

# The hub writes its process id, and the probe reads it. The launcher reaps the probe first, so the
# probe can see the dead hub as a zombie ("Z").
_RECORD_ARGUMENTS = """#!/bin/sh
cd {folder}
printf '%s\\n' "$@" > hub.arguments
echo $$ > hub.pid
"""
_PROBE_AFTER_HUB = """#!/bin/sh
cd {folder}
while :; do
  [ -s hub.pid ] || continue
  read -r pid < hub.pid
  {is_zombie} && exit 7
done
"""


def make_failing(suite, path="td_hub"):
    """The hub ends at once and the probe fails right after: the launcher gives up."""
    folder = shlex.quote(str(suite.folder))
    suite.script(path, _RECORD_ARGUMENTS.format(folder=folder))
    suite.tool("curl", _PROBE_AFTER_HUB.format(folder=folder, is_zombie=system.IS_ZOMBIE))


def ports(suite):
    """The dashboard port and the control port that the hub was given, as text."""
    names_and_values = (suite.folder / "hub.arguments").read_text().splitlines()
    assert names_and_values[::2] == ["--udp-port", "--http-port"]
    return names_and_values[3], names_and_values[1]


def ports_of_failing_run(suite, *arguments, **options):
    """Runs the launcher on a hub made by `make_failing` and returns that hub's ports."""
    run = suite.start(*arguments, **options)
    assert run.wait() == 1, (run.output, run.errors)
    return ports(suite)
