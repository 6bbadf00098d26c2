"""A limit on the size of files: writing beyond it must not end the launcher."""

import resource
import shutil
import signal
from pathlib import Path

import pytest
from component_events import (
    exits,
    kill_until_reaped,
    starts,
    stops,
    wait_for_components,
    wait_for_start,
)
from components import COMPONENTS, STOP_ORDER
from interface import start_interface
from settings_in_force import settings_text

ENV = shutil.which("env")
PRLIMIT = shutil.which("prlimit")
LOG_SIZE = 1 << 20  # bytes: more than any other file of a test needs


def limit_file_size(pid, size):
    """Limits what a process and those that it starts from now on can write to a file."""
    _, highest = resource.prlimit(pid, resource.RLIMIT_FSIZE)
    resource.prlimit(pid, resource.RLIMIT_FSIZE, (size, highest))


def signals(pid, field):
    """The numbers of the signals in a field of a process's state, such as "SigIgn"."""
    status = Path(f"/proc/{pid}/status").read_text()
    mask = next(int(line.split()[1], 16) for line in status.splitlines() if line.startswith(field))
    return {number for number in range(1, 65) if mask >> (number - 1) & 1}


@pytest.mark.parametrize("size", [0, 10])
def test_saving_beyond_the_limit_does_not_end_the_launcher(suite, size):
    suite.save_settings(settings_text(suite.http, suite.udp, True))
    interface = start_interface(suite)
    limit_file_size(interface.pid, size)
    interface.ask("set_pref", 0)
    assert interface.running() == COMPONENTS
    assert len(suite.settings.read_bytes()) <= size
    assert interface.ask("pref") is False
    limit_file_size(interface.pid, resource.RLIM_INFINITY)
    interface.ask("set_pref", 0)
    assert suite.settings.read_text() == settings_text(suite.http, suite.udp, False)
    assert interface.quit() == 0
    assert stops(suite) == STOP_ORDER
    assert interface.errors == b""


def start_with_full_log(suite):
    """Starts a run whose output and errors go to a file that is at the limit already."""
    log = suite.folder / "full.log"
    log.write_bytes(b" " * LOG_SIZE)
    command = [f"--fsize={LOG_SIZE}", suite.launcher, *suite.ports_options, "--no-browser"]
    with log.open("ab") as output:
        return suite.start(*command, program=PRLIMIT, stdout=output, stderr=output)


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_a_log_at_the_limit_does_not_end_the_launcher(suite, number):
    suite.record()
    run = start_with_full_log(suite)
    wait_for_components(suite)
    kill_until_reaped(suite, "receiver")  # the restart has a message
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
        pid = starts(suite, name)[-1]["pid"]
        assert signal.SIGXFSZ not in signals(pid, "SigIgn") | signals(pid, "SigCgt")
        assert signal.SIGXFSZ not in signals(pid, "SigBlk")
    assert run.stop() == 0


def test_a_limit_signal_that_the_parent_ignores_stays_ignored(suite):
    suite.record()
    command = ["--ignore-signal=XFSZ", suite.launcher, *suite.ports_options, "--no-browser"]
    run = suite.start(*command, program=ENV)
    wait_for_components(suite)
    for pid in (run.pid, *(starts(suite, name)[0]["pid"] for name in COMPONENTS)):
        assert signal.SIGXFSZ in signals(pid, "SigIgn")
    assert run.stop() == 0
