"""Ctrl-C and SIGTERM at many moments: the run ends in time and leaves no process behind."""

import errno
import os
import time
from signal import SIGINT, SIGTERM

import console
import psutil
import pytest
import system
from components import COMPONENTS
from deadline import wait_until
from probe_tools import CURL
from run import CTRL_BACKSLASH, CTRL_C
from suite import NEVER, RECORDING_TOOL

# ms after the launcher was executed; start-up takes about 150.
START_UP = [0, 1, 2, 3, 4, 6, 8, 10, 15, 20, 30, 50, 80, 100, 120, 140, 170, 200, 300, 600]
HUB_WAIT = [0, 20, 100, 400, 1900, 2050, 2200]
# s: one probe of at most 2 s with its pause, the end of the components, and time for a busy machine.
LIMIT = 2.1 + 6


def press_ctrl_c(run):
    run.interrupt()


def send_sigterm(run):
    """To the launcher alone, not to the tools that it runs."""
    run.signal(SIGTERM)


def send_sigint(run):
    """To the launcher alone, not to the tools that it runs."""
    run.signal(SIGINT)


def probes(port, tool=None):
    """The live processes that probe a dashboard port: all, or those of one tool."""
    found = []
    for process in psutil.process_iter():
        try:
            words = process.cmdline()
            if any(f"127.0.0.1:{port}/" in word for word in words) and tool in (None, words[0]):
                found.append(process)
        except (psutil.NoSuchProcess, psutil.AccessDenied):
            continue
    return found


def check_nothing_left(suite):
    """Checks that nothing runs any more, and that no component had to be killed."""
    assert suite.processes() == []
    assert probes(suite.http) == []
    # A component that was killed would have recorded no exit.
    started = {row["pid"] for row in suite.events("start")}
    assert started == {row["pid"] for row in suite.events("exit")}


def check_interrupted_run(suite, run, status):
    """Checks that the output of an interrupted run fits its exit status."""
    text = run.text
    message = console.hub_silent(suite.http).encode()
    if status in (-SIGINT, -SIGTERM):  # before it had installed handlers
        assert text == b""
        assert suite.events() == []
    elif status == 1:  # before the hub had answered
        assert text == console.TITLE + message + b"\n"
        assert len(suite.calls("osascript")) == 1
    else:
        assert status == 0
        assert text.startswith(console.TITLE)
        assert text.endswith(console.STOPPED)
        assert text.count(b"Tandrel: ") == 2
    check_nothing_left(suite)


def interrupt_after(suite, delay, interrupt, *arguments):
    """Starts a run in a terminal, interrupts it after `delay` ms, and returns it and its status."""
    suite.record(*COMPONENTS)
    run = suite.start(*suite.ports_options, *arguments, terminal="all")
    time.sleep(delay / 1000)  # not a wait: the test is about this moment
    interrupted = time.monotonic()
    interrupt(run)
    status = run.wait()
    assert time.monotonic() - interrupted < LIMIT
    return run, status


@pytest.mark.parametrize("interrupt", [press_ctrl_c, send_sigterm])
@pytest.mark.parametrize("delay", START_UP)
def test_interrupts_at_many_moments_of_a_start(suite, delay, interrupt):
    run, status = interrupt_after(suite, delay, interrupt)
    check_interrupted_run(suite, run, status)


@pytest.mark.parametrize("delay", [50, 100, 130, 160, 300])
def test_interrupts_at_many_moments_of_a_verbose_start(suite, delay):
    run, status = interrupt_after(suite, delay, press_ctrl_c, "--no-browser", "--verbose")
    assert status in (-SIGINT, 0, 1)
    assert run.output.count(b"Tandrel: stopped.") == (status == 0)
    assert b"restarting" not in run.output
    assert suite.processes() == []
    assert probes(suite.http) == []


@pytest.mark.parametrize("interrupt", [press_ctrl_c, send_sigint, send_sigterm])
@pytest.mark.parametrize("delay", HUB_WAIT)
def test_interrupts_at_many_moments_of_the_wait_for_a_silent_hub(suite, delay, interrupt):
    suite.set_behaviour("hub", "never-answer")
    run, status = interrupt_after(suite, delay, interrupt)
    assert status in (-SIGINT, -SIGTERM, 1)
    check_interrupted_run(suite, run, status)


@pytest.mark.parametrize("delay", [100, 300, 500])
def test_interrupts_at_many_moments_of_the_wait_for_a_late_hub(suite, delay):
    suite.set_behaviour("hub", f"answer-after={NEVER}")
    run, status = interrupt_after(suite, delay, press_ctrl_c)
    assert status in (-SIGINT, 1)
    check_interrupted_run(suite, run, status)


@pytest.mark.parametrize("key", [CTRL_C, CTRL_BACKSLASH])
def test_a_key_during_a_probe(suite, key):
    """It ends curl and the wait, before curl's own timeout.

    No shell reports that Ctrl-\\ has ended curl.
    """
    suite.set_behaviour("hub", "never-answer")
    suite.record("hub")
    run = suite.start(*suite.ports_options, terminal="all")
    wait_until(lambda: suite.events("start"), "the hub")
    wait_until(lambda: probes(suite.http), "a probe")
    run.press(key)
    assert run.wait() == 1
    check_interrupted_run(suite, run, 1)


def test_a_sigint_to_curl_alone_does_not_end_the_wait(suite):
    suite.set_behaviour("hub", "never-answer")
    run = suite.start(*suite.ports_options)
    (probe, *_) = wait_until(lambda: probes(suite.http, "curl"), "a probe")
    probe.send_signal(SIGINT)
    wait_until(lambda: set(probes(suite.http, "curl")) - {probe}, "the next probe")
    assert run.stop() == 1
    assert suite.processes() == []


@pytest.mark.parametrize(
    "end", ["kill -INT $$", "kill -TERM $$", "kill -KILL $$", "exit 1", "exit 130"]
)
def test_no_end_of_a_probe_ends_the_wait(suite, end):
    count_call = "printf '%s\\0' 0 >> \"$0.calls\""
    fourth = '[ "$(wc -c < "$0.calls")" -gt 6 ]'
    suite.tool("curl", f'#!/bin/sh\n{count_call}\n{fourth} && exec {CURL} "$@"\n{end}\n')
    run = suite.start_up("--no-browser")
    assert len(suite.calls("curl")) >= 4
    assert run.stop() == 0


def add_tool_that_waits(suite, name):
    """Adds a tool that records its call and waits for `end_tool` or a signal."""
    os.mkfifo(suite.bin / f"{name}.end")
    suite.tool(name, RECORDING_TOOL + 'read -r _ < "$0.end"\n')


def end_tool(suite, name):
    """Ends a waiting tool, which Ctrl-C may already have ended."""

    def open_its_end():
        try:
            os.close(os.open(suite.bin / f"{name}.end", os.O_WRONLY | os.O_NONBLOCK))
        except OSError as error:
            assert error.errno == errno.ENXIO  # it does not wait yet, or no longer
            return not runs_tool()
        return True

    def runs_tool():
        rows = psutil.process_iter(["cmdline"])  # None if the process has ended
        return any(str(suite.bin / name) in (row.info["cmdline"] or ()) for row in rows)

    wait_until(open_its_end, f"{name} to wait")
    wait_until(lambda: not runs_tool(), f"the end of {name}")


@system.needs("background browser")
@pytest.mark.parametrize("interrupt", [press_ctrl_c, send_sigterm])
def test_an_interrupt_while_the_browser_is_opened(suite, interrupt):
    add_tool_that_waits(suite, "open")
    suite.record(*COMPONENTS)
    run = suite.start(*suite.ports_options, "--browser", terminal="all")
    wait_until(lambda: suite.calls("open"), "the call for the browser")
    interrupt(run)
    assert run.wait() == 0
    end_tool(suite, "open")
    check_interrupted_run(suite, run, 0)


def test_ctrl_c_while_an_alert_is_shown(suite):
    add_tool_that_waits(suite, "osascript")
    suite.set_behaviour("hub", "exit-at-once")
    suite.record("hub")
    run = suite.start(*suite.ports_options, terminal="all")
    wait_until(lambda: suite.calls("osascript"), "the alert")
    run.interrupt()
    assert run.wait() == 1
    check_interrupted_run(suite, run, 1)


@pytest.mark.parametrize("number", [SIGINT, SIGTERM])
def test_an_alert_stays_until_it_is_dismissed(suite, number):
    add_tool_that_waits(suite, "osascript")
    suite.set_behaviour("hub", f"answer-after={NEVER}")
    suite.record("hub")
    run = suite.start(*suite.ports_options, terminal="all")
    wait_until(lambda: suite.events("start"), "the hub")
    run.signal(number)
    wait_until(lambda: suite.calls("osascript"), "the alert")
    run.signal(number)
    assert suite.processes("hub") != []  # it is stopped after the alert
    end_tool(suite, "osascript")
    assert run.wait() == 1
    check_interrupted_run(suite, run, 1)
