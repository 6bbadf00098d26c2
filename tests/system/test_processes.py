"""What a component's process inherits: streams, session, signals, descriptors, environment."""

import fcntl
import os
from pathlib import Path
from signal import (
    SIGCONT,
    SIGHUP,
    SIGINT,
    SIGKILL,
    SIGPIPE,
    SIGQUIT,
    SIGSTOP,
    SIGTERM,
    SIGUSR1,
    SIGUSR2,
)

import console
import psutil
import pytest
import system
from component_events import start_recording, stops, wait_for_components
from components import COMPONENTS, PROGRAMS, STOP_ORDER
from console import READY
from deadline import wait_until
from inherited_signals import start_with_signals


def start_events(suite):
    """The only start event of each component, by program."""
    wait_for_components(suite)
    rows = suite.events("start")
    assert len(rows) == len(COMPONENTS)
    return {row["program"]: row for row in rows}


def start_with_events(suite, *options, **run_options):
    """A run whose components have all started, and their start events."""
    run = start_recording(suite, *options, **run_options)
    return run, start_events(suite)


def start_inheriting(suite, verbose=False, **signals):
    """The same for a launcher that is started with signals "ignored" or "blocked"."""
    suite.record()
    options = [*suite.ports_options, "--no-browser", *(["--verbose"] if verbose else [])]
    run = start_with_signals(suite, *options, **signals)
    run.wait_for(READY)
    return run, start_events(suite)


@pytest.mark.parametrize("terminal", ["input", "all"])
def test_quiet_components_have_no_terminal_and_a_session_each(suite, terminal):
    run, rows = start_with_events(suite, terminal=terminal)
    for row in rows.values():
        assert row["ppid"] == run.pid
        assert row["pgid"] == row["sid"] == row["pid"]
        assert row["stdio"] == ["/dev/null"] * 3
        assert row["isatty"] == [False] * 3
        assert row["descriptors"] == []
    assert run.stop() == 0


def test_verbose_components_share_the_launchers_terminal_session_and_group(suite):
    run, rows = start_with_events(suite, "--verbose", terminal="all")
    for row in rows.values():
        assert row["ppid"] == row["pgid"] == row["sid"] == run.pid
        assert row["isatty"] == [True] * 3
        assert len(set(row["stdio"])) == 1
        assert row["descriptors"] == []
    assert run.stop() == 0


def test_verbose_components_write_to_the_launchers_pipes(suite):
    suite.script("td_receiver", "#!/bin/sh\necho to output\necho to errors >&2\nexec sleep 600\n")
    run = suite.start_up("--no-browser", "--verbose")
    run.wait_for("to output\n")
    run.wait_for("to errors\n", stream="errors")
    assert run.stop() == 0


def test_quiet_components_write_nothing_anywhere(suite):
    noise = "#!/bin/sh\necho noise\necho noise >&2\n: > $0.done\nexec sleep 600\n"
    suite.script("td_receiver", noise)
    suite.script("td_sender", noise)
    run = suite.start_up("--no-browser")
    for name in ("receiver", "sender"):
        wait_until(Path(f"{suite.component(name)}.done").exists, "the noise")
    assert run.stop() == 0
    url = console.dashboard_url(suite.http)
    assert run.output == console.TITLE + console.announcement(url) + console.STOPPED
    assert run.errors == b""


def test_quiet_components_read_nothing(suite):
    suite.script("td_receiver", "#!/bin/sh\ncat > $0.input\n: > $0.done\nexec sleep 600\n")
    run = suite.start_up("--no-browser", terminal="all")
    os.write(run.terminal, b"typed\n")
    wait_until(Path(f"{suite.component('receiver')}.done").exists, "the end of the input")
    assert Path(f"{suite.component('receiver')}.input").read_bytes() == b""
    assert run.stop() == 0


@pytest.mark.parametrize("verbose", [False, True])
def test_no_descriptor_of_the_launcher_reaches_a_component(suite, verbose):
    reading, writing = os.pipe()
    run, rows = start_with_events(
        suite, *(["--verbose"] if verbose else []), pass_fds=[reading, writing], terminal="all"
    )
    os.close(reading)
    os.close(writing)
    assert [row["descriptors"] for row in rows.values()] == [[], [], []]
    assert run.stop() == 0


def test_components_of_a_launcher_without_streams_get_dev_null(suite):
    suite.record()
    options = " ".join([*suite.ports_options, "--no-browser"])
    run = suite.start("-c", f"exec ./launcher {options} <&- >&- 2>&-", program="/bin/sh")
    rows = start_events(suite)
    assert [row["stdio"] for row in rows.values()] == [["/dev/null"] * 3] * 3
    assert [row["descriptors"] for row in rows.values()] == [[], [], []]
    assert run.stop() == 0


@pytest.mark.parametrize("verbose", [False, True])
def test_no_descriptor_above_a_lowered_limit_reaches_a_component(suite, verbose):
    """A parent opens it, lowers the limit, and starts the launcher."""
    reading, writing = os.pipe()
    high = fcntl.fcntl(reading, fcntl.F_DUPFD, 200)
    lower_limit = suite.script("start", '#!/bin/sh\nulimit -S -n 64\nexec ./launcher "$@"\n')
    run, rows = start_with_events(
        suite, *(["--verbose"] if verbose else []), program=lower_limit, pass_fds=[high]
    )
    for descriptor in (reading, writing, high):
        os.close(descriptor)
    assert high in system.descriptors(run.pid)
    assert [row["descriptors"] for row in rows.values()] == [[], [], []]
    assert run.stop() == 0


@pytest.mark.parametrize("verbose", [False, True])
def test_components_inherit_default_signals_except_for_an_ignored_sigpipe(suite, verbose):
    run, rows = start_inheriting(suite, verbose)
    assert [row["ignored"] for row in rows.values()] == [[SIGPIPE]] * 3
    assert [row["blocked"] for row in rows.values()] == [[], [], []]
    assert run.stop() == 0


def test_int_and_term_are_default_even_if_the_launcher_was_started_with_them_ignored(suite):
    run, rows = start_inheriting(suite, ignored=[SIGINT, SIGTERM, SIGUSR1], blocked=[SIGUSR2])
    assert [row["ignored"] for row in rows.values()] == [sorted([SIGUSR1, SIGPIPE])] * 3
    assert [row["blocked"] for row in rows.values()] == [[SIGUSR2]] * 3
    assert run.stop(SIGTERM) == 0


@system.needs("signals of others")
@pytest.mark.parametrize("verbose", [False, True])
@pytest.mark.parametrize("number", [SIGINT, SIGTERM, SIGHUP, SIGQUIT])
def test_a_signal_that_the_parent_has_blocked_ends_the_run(suite, number, verbose):
    run, rows = start_inheriting(suite, verbose, blocked=[number, SIGUSR2])
    assert system.signal_set(run.pid, "Blk") == {SIGUSR2}
    assert [row["blocked"] for row in rows.values()] == [[SIGUSR2]] * 3
    assert run.stop(number) == 0
    assert run.output.endswith(console.STOPPED)
    # None was killed.
    assert stops(suite) == STOP_ORDER
    assert [row["signal"] for row in suite.events("stop")] == [SIGTERM] * 3
    assert [row["program"] for row in suite.events("exit")] == STOP_ORDER


@system.needs("signals of others")
def test_an_ignored_quit_signal_stays_ignored(suite):
    run, rows = start_inheriting(suite, ignored=[SIGQUIT])
    assert [row["ignored"] for row in rows.values()] == [[SIGQUIT, SIGPIPE]] * 3
    assert SIGQUIT in system.signal_set(run.pid, "Ign")
    run.signal(SIGQUIT)
    old = suite.kill("receiver")
    suite.wait_for_restart("receiver", old)
    assert run.stop() == 0


@system.needs("signals of others")
def test_the_end_of_the_launcher_alone_stops_no_component(suite):
    run, rows = start_with_events(suite)
    pids = [row["pid"] for row in rows.values()]
    for pid in pids:  # signals to a suspended process stay pending
        os.kill(pid, SIGSTOP)
        wait_until(lambda: system.is_suspended(pid), "the suspension")
    run.signal(SIGKILL)
    assert run.wait() == -SIGKILL
    assert [system.signal_set(pid, "ShdPnd") for pid in pids] == [set()] * 3
    for pid in pids:
        os.kill(pid, SIGTERM)
        os.kill(pid, SIGCONT)
    wait_until(lambda: not suite.processes(), "the end of the components")


@system.needs("signals of others")
def test_under_nohup_a_hangup_changes_nothing(suite):
    run, rows = start_inheriting(suite, ignored=[SIGHUP])
    assert [row["ignored"] for row in rows.values()] == [[SIGHUP, SIGPIPE]] * 3
    assert SIGHUP in system.signal_set(run.pid, "Ign")
    assert {SIGINT, SIGTERM} <= system.signal_set(run.pid, "Cgt")
    run.signal(SIGHUP)
    old = suite.kill("receiver")
    suite.wait_for_restart("receiver", old)
    assert run.stop() == 0


def test_the_environment_and_the_working_folder_are_the_launchers(suite):
    environment = {**suite.environment, "ODD": "a=b\n", "EMPTY": ""}
    run, _ = start_with_events(suite, environment=environment, cwd=suite.home)
    for name in COMPONENTS:
        process = suite.process(name)
        assert process.environ() == environment
        assert process.cwd() == str(suite.home)
    assert run.stop() == 0


def test_components_are_started_from_the_launchers_folder_and_not_from_the_path(suite):
    for name in COMPONENTS:
        suite.tool(f"td_{name}")
    run, rows = start_with_events(suite)
    assert {row["argv"][0] for row in rows.values()} == {
        str(suite.component(name)) for name in COMPONENTS
    }
    assert run.stop() == 0
    assert [suite.calls(f"td_{name}") for name in COMPONENTS] == [[], [], []]


def test_each_component_is_one_child_of_the_launcher(suite):
    run, _ = start_with_events(suite)
    children = psutil.Process(run.pid).children(recursive=True)
    assert sorted(child.name() for child in children) == PROGRAMS[:3]
    assert run.stop() == 0
