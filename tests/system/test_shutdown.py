"""How a console run ends: by Ctrl-C, signals, a closed terminal; and what it leaves behind."""

import os
import shutil
import time
from pathlib import Path
from signal import SIGCONT, SIGHUP, SIGINT, SIGSTOP, SIGTERM

import console
import pytest
from deadline import DEADLINE
from history import RESTARTING, SECOND, kill, starts, stops, wait_for_start
from suite import wait_until

COMPONENTS = ["hub", "receiver", "sender"]
STOP_ORDER = ["td_sender", "td_receiver", "td_hub"]
GRACE = 4 * SECOND  # that a component has after its SIGTERM


def start_up(suite, *arguments, **options):
    """A run whose components record and have all begun their work."""
    suite.record()
    run = suite.start_up("--no-browser", *arguments, **options)
    for name in COMPONENTS:
        wait_for_start(suite, name)
    return run


def has_stopped_in_order(suite):
    """Whether each component ended before the next was told to."""
    ends = [(row["event"], row["program"]) for row in suite.events() if row["event"] != "start"]
    assert ends == [(event, name) for name in STOP_ORDER for event in ("stop", "exit")]
    assert [row["signal"] for row in suite.events("stop")] == [SIGTERM] * 3
    assert suite.processes() == []
    return True


@pytest.mark.parametrize("presses", [1, 2, 5])
def test_ctrl_c(suite, presses):
    run = start_up(suite, terminal="all")
    for _ in range(presses):
        run.interrupt()
    assert run.wait() == 0
    text = run.output.replace(b"\r\n", b"\n").replace(b"^C", b"")
    assert text.endswith(console.STOPPED)
    assert text.count(b"Tandrel: stop") == 2
    assert has_stopped_in_order(suite)


def test_a_flood_of_signals_cuts_no_message_short(suite):
    run = start_up(suite, terminal="all")
    end = time.monotonic() + DEADLINE
    while run.process.poll() is None and time.monotonic() < end:
        run.signal(SIGINT)
    assert run.process.poll() == 0
    run.wait()
    assert run.output.replace(b"\r\n", b"\n").endswith(console.STOPPED)


def test_ctrl_c_while_it_is_stopping(suite):
    suite.behave("receiver", "ignore-sigterm")
    run = start_up(suite, terminal="all")
    run.interrupt()
    wait_until(lambda: suite.events("ignored"), "the receiver to get its signal")
    run.interrupt()
    run.signal(SIGTERM)
    assert run.wait() == 0
    assert run.output.count(b"Tandrel: stop") == 2
    assert stops(suite) == ["td_sender", "td_hub"]
    assert suite.processes() == []


@pytest.mark.parametrize("number", [SIGINT, SIGTERM, SIGHUP])
def test_a_signal_ends_the_run_like_ctrl_c(suite, number):
    run = start_up(suite)
    assert run.stop(number) == 0
    assert run.output.endswith(console.STOPPED)
    assert run.output.count(b"Tandrel: stop") == 2
    assert run.errors == b""
    assert has_stopped_in_order(suite)


def test_several_kinds_of_signals_end_the_run_once(suite):
    run = start_up(suite)
    for number in (SIGTERM, SIGINT, SIGHUP, SIGTERM):
        run.signal(number)
    assert run.wait() == 0
    assert run.output.count(b"Tandrel: stop") == 2
    assert has_stopped_in_order(suite)


def test_closing_the_terminal_ends_the_run(suite):
    run = start_up(suite, terminal="all")
    run.hang_up()
    assert run.wait() == 0
    assert has_stopped_in_order(suite)


def test_closing_the_terminal_of_a_verbose_run_ends_it(suite):
    run = start_up(suite, "--verbose", terminal="all")
    run.hang_up()
    assert run.wait() == 0
    wait_until(lambda: not suite.processes(), "the end of the components")


def test_nohup_keeps_the_run_through_a_hangup(suite):
    nohup = shutil.which("nohup")
    suite.record()
    run = suite.start(
        suite.launcher, *suite.ports_options, "--no-browser", program=nohup, terminal="all"
    )
    for name in COMPONENTS:
        assert SIGHUP in wait_for_start(suite, name)["ignored"]
    log = suite.folder / "nohup.out"
    wait_until(lambda: b"Ctrl-C here" in log.read_bytes(), "the end of the start-up")
    run.hang_up()
    kill(suite, "sender")
    wait_for_start(suite, "sender", 2)
    run.signal(SIGHUP)
    kill(suite, "sender")
    wait_for_start(suite, "sender", 3)
    assert run.stop(SIGTERM) == 0
    restarts = RESTARTING.format("sender").encode() * 2
    assert log.read_bytes().endswith(restarts + console.STOPPED)
    assert stops(suite) == STOP_ORDER


def test_a_component_that_ignores_its_signal_is_killed(suite):
    suite.behave("receiver", "ignore-sigterm")
    run = start_up(suite)
    assert run.stop(SIGTERM) == 0
    assert stops(suite) == ["td_sender", "td_hub"]
    (ignored,) = suite.events("ignored")
    hub_stop = suite.events("stop", "td_hub")[0]
    # Both times are taken where the signal arrives, the first of them a little late.
    assert hub_stop["time_ns"] - suite.events("exit", "td_sender")[0]["time_ns"] >= GRACE
    assert ignored["program"] == "td_receiver"
    assert suite.processes() == []
    assert run.output.endswith(console.STOPPED)


def test_a_component_that_is_stopped_by_its_user_is_killed(suite):
    """A process that job control has stopped does not see SIGTERM, but SIGKILL."""
    run = start_up(suite)
    os.kill(starts(suite, "sender")[0]["pid"], SIGSTOP)
    begin = time.monotonic_ns()
    assert run.stop(SIGTERM) == 0
    assert time.monotonic_ns() - begin >= GRACE
    assert stops(suite) == ["td_receiver", "td_hub"]
    assert suite.processes() == []


def test_components_that_died_unseen_are_no_trouble(suite):
    run = start_up(suite)
    run.signal(SIGSTOP)
    for name in COMPONENTS:
        kill(suite, name)
    run.signal(SIGTERM)
    run.signal(SIGCONT)
    assert run.wait() == 0
    # It was stopped between two looks or, rarely, in one, which it then finishes.
    assert run.errors.decode() in ("", *map(RESTARTING.format, COMPONENTS))
    assert run.output.endswith(console.STOPPED)
    assert suite.processes() == []


def test_a_verbose_run_shares_its_terminal(suite):
    run = start_up(suite, "--verbose", terminal="all")
    for start in suite.events("start"):
        assert start["isatty"] == [True] * 3
        assert start["pgid"] == start["sid"] == run.pid
        assert start["descriptors"] == []
    run.interrupt()
    assert run.wait() == 0
    assert sorted(stops(suite)) == sorted(STOP_ORDER)
    # The terminal told each of them, so none died of anything else, and none was restarted.
    assert {row["signal"] for row in suite.events("stop")} <= {SIGINT, SIGTERM}
    assert suite.events("stop", "td_hub")[0]["signal"] == SIGINT
    assert len(suite.events("start")) == 3
    text = run.output.replace(b"\r\n", b"\n")
    assert b"restarting" not in text
    assert text.count(b"Tandrel: stopping...") == text.count(b"Tandrel: stopped.") == 1
    assert suite.processes() == []


def test_a_verbose_run_restarts_on_the_terminal(suite):
    run = start_up(suite, "--verbose", terminal="all")
    kill(suite, "sender")
    assert wait_for_start(suite, "sender", 2)["isatty"] == [True] * 3
    assert run.stop(SIGTERM) == 0
    assert stops(suite) == STOP_ORDER


def test_a_run_can_follow_another_at_once(suite):
    suite.record()
    for count in (1, 2, 3):
        run = suite.start_up("--no-browser", terminal="all")
        for name in COMPONENTS:
            wait_for_start(suite, name, count)
        run.interrupt()
        assert run.wait() == 0
    assert stops(suite) == STOP_ORDER * 3


def test_an_idle_console_run_uses_no_cpu(suite):
    run = start_up(suite)
    before = cpu_ticks(run.pid)
    time.sleep(10)  # the measurement itself
    assert cpu_ticks(run.pid) - before <= 1
    assert run.stop() == 0


def cpu_ticks(pid):
    """The clock ticks of processor time that a process has used."""
    fields = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return int(fields[11]) + int(fields[12])
