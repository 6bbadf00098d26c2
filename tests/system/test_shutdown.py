"""The end of a console run: by Ctrl-C, by signals, by a closed terminal."""

import os
import shutil
import time
from signal import SIGCONT, SIGHUP, SIGINT, SIGQUIT, SIGSTOP, SIGTERM

import console
import psutil
import pytest
from component_events import (
    KILL_DELAY,
    SECOND,
    ends,
    kill,
    orderly_ends,
    start_recording,
    starts,
    stops,
    wait_for_components,
    wait_for_start,
)
from components import COMPONENTS, STOP_ORDER
from console import RESTARTING
from deadline import DEADLINE, wait_until
from run import CTRL_BACKSLASH, CTRL_C


def check_stopped_in_order(suite):
    """Checks that each component ended before the next one got its SIGTERM."""
    assert ends(suite) == orderly_ends(*STOP_ORDER)
    assert [row["signal"] for row in suite.events("stop")] == [SIGTERM] * 3
    assert suite.processes() == []


@pytest.mark.parametrize("keys", [[CTRL_C], [CTRL_C] * 2, [CTRL_C] * 5, [CTRL_BACKSLASH]])
def test_a_key_stops_everything_in_order(suite, keys):
    run = start_recording(suite, terminal="all")
    for key in keys:
        run.press(key)
    assert run.wait() == 0
    assert run.text.endswith(console.STOPPED)
    assert run.text.count(b"Tandrel: stop") == 2
    check_stopped_in_order(suite)


def test_many_signals_do_not_cut_off_the_messages(suite):
    run = start_recording(suite, terminal="all")
    end = time.monotonic() + DEADLINE
    while run.process.poll() is None and time.monotonic() < end:
        run.signal(SIGINT)
    assert run.process.poll() == 0
    run.wait()
    assert run.text.endswith(console.STOPPED)


def test_ctrl_c_while_the_run_is_stopping(suite):
    suite.set_behaviour("receiver", "ignore-sigterm")
    run = start_recording(suite, terminal="all")
    run.interrupt()
    wait_until(lambda: suite.events("ignored"), "the receiver to get its signal")
    run.interrupt()
    run.signal(SIGTERM)
    assert run.wait() == 0
    assert run.output.count(b"Tandrel: stop") == 2
    assert stops(suite) == ["td_sender", "td_hub"]
    assert suite.processes() == []


@pytest.mark.parametrize("number", [SIGINT, SIGTERM, SIGHUP, SIGQUIT])
def test_a_signal_ends_the_run_like_ctrl_c(suite, number):
    run = start_recording(suite)
    assert run.stop(number) == 0
    assert run.output.endswith(console.STOPPED)
    assert run.output.count(b"Tandrel: stop") == 2
    assert run.errors == b""
    check_stopped_in_order(suite)


def test_several_kinds_of_signals_end_the_run_once(suite):
    run = start_recording(suite)
    for number in (SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGTERM):
        run.signal(number)
    assert run.wait() == 0
    assert run.output.count(b"Tandrel: stop") == 2
    check_stopped_in_order(suite)


def test_closing_the_terminal_ends_the_run(suite):
    run = start_recording(suite, terminal="all")
    run.hang_up()
    assert run.wait() == 0
    check_stopped_in_order(suite)


def test_closing_the_terminal_of_a_verbose_run_ends_it(suite):
    run = start_recording(suite, "--verbose", terminal="all")
    run.hang_up()
    assert run.wait() == 0
    wait_until(lambda: not suite.processes(), "the end of the components")


def test_under_nohup_a_run_goes_on_after_its_terminal_closes(suite):
    nohup = shutil.which("nohup")
    suite.record()
    run = suite.start(
        suite.launcher, *suite.ports_options, "--no-browser", program=nohup, terminal="all"
    )
    wait_for_components(suite)
    for start in suite.events("start"):
        assert SIGHUP in start["ignored"]
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


def test_a_component_that_ignores_sigterm_is_killed(suite):
    suite.set_behaviour("receiver", "ignore-sigterm")
    run = start_recording(suite)
    assert run.stop(SIGTERM) == 0
    assert stops(suite) == ["td_sender", "td_hub"]
    (ignored,) = suite.events("ignored")
    hub_stop = suite.events("stop", "td_hub")[0]
    # The sender's end is recorded just before the receiver gets its SIGTERM.
    delay = hub_stop["time_ns"] - suite.events("exit", "td_sender")[0]["time_ns"]
    assert KILL_DELAY <= delay < KILL_DELAY + 6 * SECOND  # the rest allows for a busy machine
    assert ignored["program"] == "td_receiver"
    assert suite.processes() == []
    assert run.output.endswith(console.STOPPED)


def test_a_suspended_component_is_killed(suite):
    """SIGTERM does not reach a process that SIGSTOP has suspended; SIGKILL does."""
    run = start_recording(suite)
    os.kill(starts(suite, "sender")[0]["pid"], SIGSTOP)
    begin = time.monotonic_ns()
    assert run.stop(SIGTERM) == 0
    assert time.monotonic_ns() - begin >= KILL_DELAY
    assert stops(suite) == ["td_receiver", "td_hub"]
    assert suite.processes() == []


def test_components_that_died_unnoticed_do_not_affect_the_end(suite):
    run = start_recording(suite)
    run.signal(SIGSTOP)
    for name in COMPONENTS:
        kill(suite, name)
    run.signal(SIGTERM)
    run.signal(SIGCONT)
    assert run.wait() == 0
    # It was suspended between two polls or, rarely, during one, which it then finishes.
    assert run.errors.decode() in ("", *map(RESTARTING.format, COMPONENTS))
    assert run.output.endswith(console.STOPPED)
    assert suite.processes() == []


def test_ctrl_c_reaches_a_verbose_run_and_its_components(suite):
    run = start_recording(suite, "--verbose", terminal="all")
    for start in suite.events("start"):
        assert start["isatty"] == [True] * 3
        assert start["pgid"] == start["sid"] == run.pid
        assert start["descriptors"] == []
    run.interrupt()
    assert run.wait() == 0
    assert sorted(stops(suite)) == sorted(STOP_ORDER)
    # The terminal signals all of them; nothing else ended one, and none was restarted.
    assert {row["signal"] for row in suite.events("stop")} <= {SIGINT, SIGTERM}
    assert suite.events("stop", "td_hub")[0]["signal"] == SIGINT
    assert len(suite.events("start")) == 3
    assert b"restarting" not in run.output
    assert run.output.count(b"Tandrel: stopping...") == 1
    assert run.output.count(b"Tandrel: stopped.") == 1
    assert suite.processes() == []


def test_a_verbose_run_restarts_components_on_the_terminal(suite):
    run = start_recording(suite, "--verbose", terminal="all")
    kill(suite, "sender")
    assert wait_for_start(suite, "sender", 2)["isatty"] == [True] * 3
    assert run.stop(SIGTERM) == 0
    assert stops(suite) == STOP_ORDER


def test_a_new_run_can_start_right_after_another(suite):
    suite.record()
    for count in (1, 2, 3):
        run = suite.start_up("--no-browser", terminal="all")
        wait_for_components(suite, count)
        run.interrupt()
        assert run.wait() == 0
    assert stops(suite) == STOP_ORDER * 3


def test_an_idle_console_run_uses_no_cpu(suite):
    run = start_recording(suite)
    before = cpu_seconds(run.pid)
    time.sleep(10)  # not a wait: this is the time measured
    assert cpu_seconds(run.pid) - before < 0.015  # Linux counts in steps of 0.01
    assert run.stop() == 0


def cpu_seconds(pid):
    """The processor time that a process has used."""
    times = psutil.Process(pid).cpu_times()
    return times.user + times.system
