"""Exceeding the file size limit must not end the launcher."""

import resource
import signal
import sys

import pytest
import system
from component_events import (
    exits,
    kill_until_reaped,
    starts,
    stops,
    wait_for_components,
    wait_for_start,
)
from components import COMPONENTS, STOP_ORDER
from inherited_signals import start_with_signals
from interface import start_interface
from run_settings import settings_text

LOG_SIZE = 1 << 20  # bytes: more than any other file of a test needs

# Executes the program in its arguments with that limit. Signals that Python ignores get their defaults back.
LIMITED = f"""
import os, resource, signal, sys
resource.setrlimit(resource.RLIMIT_FSIZE, ({LOG_SIZE}, {LOG_SIZE}))
for number in (signal.SIGPIPE, signal.SIGXFSZ):
    signal.signal(number, signal.SIG_DFL)
os.execv(sys.argv[1], sys.argv[1:])
"""


@system.needs("limits of others")
@pytest.mark.parametrize("size", [0, 10])
def test_saving_over_the_limit_does_not_end_the_launcher(suite, size):
    suite.save_settings(settings_text(suite.http, suite.udp, True))
    interface = start_interface(suite)
    system.limit_file_size(interface.pid, size)
    interface.ask("set_pref", 0)
    assert interface.running() == COMPONENTS
    assert len(suite.settings.read_bytes()) <= size
    assert interface.ask("pref") is False
    system.limit_file_size(interface.pid, resource.RLIM_INFINITY)
    interface.ask("set_pref", 0)
    assert suite.settings.read_text() == settings_text(suite.http, suite.udp, False)
    assert interface.quit() == 0
    assert stops(suite) == STOP_ORDER
    assert interface.errors == b""


def start_with_full_log(suite):
    """Starts a run whose output and errors go to a file that has already reached the limit."""
    log = suite.folder / "full.log"
    log.write_bytes(b" " * LOG_SIZE)
    command = ["-IS", "-c", LIMITED, suite.launcher, *suite.ports_options, "--no-browser"]
    with log.open("ab") as output:
        return suite.start(*command, program=sys.executable, stdout=output, stderr=output)


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_a_log_at_the_limit_does_not_end_the_launcher(suite, number):
    suite.record()
    run = start_with_full_log(suite)
    wait_for_components(suite)
    kill_until_reaped(suite, "receiver")  # the restart prints a message
    wait_for_start(suite, "receiver", 2)
    run.signal(number)
    assert run.wait_for_process() == 0
    assert stops(suite) == STOP_ORDER
    assert [len(exits(suite, name)) for name in COMPONENTS] == [1, 1, 1]
    assert (suite.folder / "full.log").stat().st_size == LOG_SIZE


def test_components_have_the_default_action_at_the_limit(suite):
    suite.record()
    run = suite.start_up("--no-browser")
    wait_for_components(suite)
    kill_until_reaped(suite, "sender")
    wait_for_start(suite, "sender", 2)
    for name in COMPONENTS:
        for start in starts(suite, name):
            assert signal.SIGXFSZ not in start["ignored"] + start["blocked"]
    assert run.stop() == 0


def start_ignoring_the_limit(suite):
    """Starts a run whose parent ignores SIGXFSZ, and waits for the components."""
    arguments = [*suite.ports_options, "--no-browser"]
    run = start_with_signals(suite, *arguments, ignored=[signal.SIGXFSZ])
    wait_for_components(suite)
    return run


@system.needs("signals of others")
def test_sigxfsz_stays_ignored_in_the_launcher(suite):
    suite.record()
    run = start_ignoring_the_limit(suite)
    assert signal.SIGXFSZ in system.signal_set(run.pid, "Ign")
    assert run.stop() == 0


def test_sigxfsz_stays_ignored_in_components(suite):
    suite.record()
    run = start_ignoring_the_limit(suite)
    for name in COMPONENTS:
        assert signal.SIGXFSZ in starts(suite, name)[0]["ignored"]
    assert run.stop() == 0
