"""Ctrl-C and SIGTERM at every moment of a run: it ends by itself, in time, and leaves nothing."""

import errno
import os
import shutil
import time
from signal import SIGINT, SIGTERM

import console
import psutil
import pytest
from suite import wait_until

# ms after the launcher was executed; a start-up takes about 150.
START_UP = [0, 1, 2, 3, 4, 6, 8, 10, 15, 20, 30, 50, 80, 100, 120, 140, 170, 200, 300, 600]
HUB_WAIT = [0, 20, 100, 400, 1900, 2050, 2200]
# One probe of at most 2 s with its pause, the end of the components, and time for a busy machine.
LIMIT = 2.1 + 6
CURL = shutil.which("curl")


def press_ctrl_c(run):
    run.interrupt()


def send_sigterm(run):
    """To the launcher alone: no tool that it runs is told."""
    run.signal(SIGTERM)


def send_sigint(run):
    """To the launcher alone: no tool that it runs is told."""
    run.signal(SIGINT)


def probes(port):
    """The live probes of a dashboard port."""
    found = []
    for process in psutil.process_iter():
        try:
            if any(f"127.0.0.1:{port}/" in word for word in process.cmdline()):
                found.append(process)
        except psutil.NoSuchProcess:
            continue
    return found


def has_left_nothing(suite):
    """Whether nothing runs any more, and every component ended in its own orderly way."""
    assert suite.processes() == []
    assert probes(suite.http) == []
    # Whoever began to work was told to stop in time; a killed one would have no end of its own.
    begun = {row["pid"] for row in suite.events("start")}
    assert begun == {row["pid"] for row in suite.events("exit")}
    return True


def text_of(run):
    return run.output.replace(b"\r\n", b"\n").replace(b"^C", b"")


def has_ended_properly(suite, run, status):
    """Whether a run that was interrupted at some moment shows what belongs to its exit status."""
    text = text_of(run)
    message = console.hub_silent(suite.http).encode()
    if status in (-SIGINT, -SIGTERM):  # before it had handlers
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
    return has_left_nothing(suite)


def interrupt_after(suite, delay, interrupt, *arguments):
    """Starts a run in a terminal, interrupts it after `delay` ms, and returns it and its status."""
    suite.record("hub", "receiver", "sender")
    run = suite.start(*suite.ports_options, *arguments, terminal="all")
    time.sleep(delay / 1000)
    interrupted = time.monotonic()
    interrupt(run)
    status = run.wait()
    assert time.monotonic() - interrupted < LIMIT
    return run, status


@pytest.mark.parametrize("interrupt", [press_ctrl_c, send_sigterm])
@pytest.mark.parametrize("delay", START_UP)
def test_at_any_moment_of_a_start(suite, delay, interrupt):
    run, status = interrupt_after(suite, delay, interrupt)
    assert has_ended_properly(suite, run, status)


@pytest.mark.parametrize("delay", [50, 100, 130, 160, 300])
def test_at_any_moment_of_a_verbose_start(suite, delay):
    run, status = interrupt_after(suite, delay, press_ctrl_c, "--no-browser", "--verbose")
    assert status in (-SIGINT, 0, 1)
    assert run.output.count(b"Tandrel: stopped.") == (status == 0)
    assert b"restarting" not in run.output
    assert suite.processes() == []
    assert probes(suite.http) == []


@pytest.mark.parametrize("interrupt", [press_ctrl_c, send_sigint, send_sigterm])
@pytest.mark.parametrize("delay", HUB_WAIT)
def test_at_any_moment_of_the_wait_for_a_hub_that_never_answers(suite, delay, interrupt):
    suite.behave("hub", "never-answer")
    run, status = interrupt_after(suite, delay, interrupt)
    assert status in (-SIGINT, -SIGTERM, 1)
    assert has_ended_properly(suite, run, status)


@pytest.mark.parametrize("delay", [100, 300, 500])
def test_at_any_moment_of_the_wait_for_a_late_hub(suite, delay):
    suite.behave("hub", "answer-after=600000")
    run, status = interrupt_after(suite, delay, press_ctrl_c)
    assert status in (-SIGINT, 1)
    assert has_ended_properly(suite, run, status)


def test_during_a_probe(suite):
    """Ctrl-C ends the tool as well as the wait, well before the tool's own time is over."""
    suite.behave("hub", "never-answer")
    suite.record("hub")
    run = suite.start(*suite.ports_options, terminal="all")
    wait_until(lambda: suite.events("start"), "the hub")
    wait_until(lambda: probes(suite.http), "a probe")
    run.interrupt()
    assert run.wait() == 1
    assert has_ended_properly(suite, run, 1)


@pytest.mark.parametrize("end", ["kill -INT $$", "exit 130"])
def test_a_probe_that_ctrl_c_ended_ends_the_wait(suite, end):
    """Even when the launcher itself was not told."""
    suite.tool("curl", f"#!/bin/sh\nprintf '%s\\0' 0 >> \"$0.calls\"\n{end}\n")
    suite.record("hub", "receiver", "sender")
    run = suite.start(*suite.ports_options)
    assert run.wait() == 1
    assert len(suite.calls("curl")) == 1
    assert run.errors.decode() == console.hub_silent(suite.http) + "\n"
    assert suite.events("start", "td_receiver") == []
    assert suite.processes() == []


def test_a_real_probe_that_ctrl_c_ended_ends_the_wait(suite):
    suite.behave("hub", "never-answer")
    run = suite.start(*suite.ports_options)
    (probe, *_) = wait_until(
        lambda: [p for p in probes(suite.http) if p.name() == "curl"], "a probe"
    )
    probe.send_signal(SIGINT)
    assert run.wait() == 1
    assert suite.processes() == []


@pytest.mark.parametrize(
    "end", ["kill -TERM $$", "kill -KILL $$", "exit 1", "exit 129", "exit 131"]
)
def test_a_probe_that_ended_otherwise_does_not(suite, end):
    count_call = "printf '%s\\0' 0 >> \"$0.calls\""
    fourth = '[ "$(wc -c < "$0.calls")" -gt 6 ]'
    suite.tool("curl", f'#!/bin/sh\n{count_call}\n{fourth} && exec {CURL} "$@"\n{end}\n')
    run = suite.start_up("--no-browser")
    assert len(suite.calls("curl")) >= 4
    assert run.stop() == 0


def tool_that_stays(suite, name):
    """A tool that records its call and stays until `end_tool`, unless a signal ends it before."""
    os.mkfifo(suite.bin / f"{name}.end")
    suite.tool(
        name,
        "#!/bin/sh\nprintf '%s\\0' \"$#\" \"$@\" >> \"$0.calls\"\nread -r _ < \"$0.end\"\n",
    )


def end_tool(suite, name):
    """Lets a tool end; it may have been ended by the closed terminal before."""

    def open_its_end():
        try:
            os.close(os.open(suite.bin / f"{name}.end", os.O_WRONLY | os.O_NONBLOCK))
        except OSError as error:
            assert error.errno == errno.ENXIO  # it does not wait, yet or any more
            return not runs_tool()
        return True

    def runs_tool():
        return any(str(suite.bin / name) in p.cmdline() for p in suite.processes())

    wait_until(open_its_end, f"{name} to wait")
    wait_until(lambda: not runs_tool(), f"the end of {name}")


@pytest.mark.parametrize("interrupt", [press_ctrl_c, send_sigterm])
def test_while_the_browser_is_opened(suite, interrupt):
    tool_that_stays(suite, "open")
    suite.record("hub", "receiver", "sender")
    run = suite.start(*suite.ports_options, "--browser", terminal="all")
    wait_until(lambda: suite.calls("open"), "the call for the browser")
    interrupt(run)
    assert run.wait() == 0
    end_tool(suite, "open")
    assert has_ended_properly(suite, run, 0)


def test_ctrl_c_while_an_alert_is_shown(suite):
    tool_that_stays(suite, "osascript")
    suite.behave("hub", "exit-at-once")
    suite.record("hub")
    run = suite.start(*suite.ports_options, terminal="all")
    wait_until(lambda: suite.calls("osascript"), "the alert")
    run.interrupt()
    assert run.wait() == 1
    assert has_ended_properly(suite, run, 1)


@pytest.mark.parametrize("number", [SIGINT, SIGTERM])
def test_an_alert_stays_until_it_is_dismissed(suite, number):
    tool_that_stays(suite, "osascript")
    suite.behave("hub", "answer-after=600000")
    suite.record("hub")
    run = suite.start(*suite.ports_options, terminal="all")
    wait_until(lambda: suite.events("start"), "the hub")
    run.signal(number)
    wait_until(lambda: suite.calls("osascript"), "the alert")
    run.signal(number)
    assert suite.processes("hub") != []  # it is stopped after the alert
    end_tool(suite, "osascript")
    assert run.wait() == 1
    assert has_ended_properly(suite, run, 1)
