"""What the stand-ins record about their starts and ends."""

import os
import signal
import subprocess
import time

import psutil
import pytest
from deadline import wait_until
from standins import Terminal, end

pytestmark = pytest.mark.one_build


def reset_signals():
    """Gives all signals their defaults, so that the program inherits nothing from the test runner."""
    for number in signal.valid_signals() - {signal.SIGKILL, signal.SIGSTOP}:
        signal.signal(number, signal.SIG_DFL)
    signal.pthread_sigmask(signal.SIG_SETMASK, set())


def test_record_of_everything_inherited(standins):
    def prepare():
        reset_signals()
        signal.signal(signal.SIGHUP, signal.SIG_IGN)
        signal.signal(signal.SIGPIPE, signal.SIG_IGN)
        signal.pthread_sigmask(signal.SIG_SETMASK, {signal.SIGUSR2, signal.SIGTERM})

    standins.set_behaviour("td_align", "record=events.jsonl")
    argument = bytes(range(1, 256))
    read_end, write_end = os.pipe()
    before = time.monotonic_ns()
    process = standins.start(
        "td_align",
        argument,
        stdout=subprocess.DEVNULL,
        stderr=subprocess.DEVNULL,
        start_new_session=True,
        pass_fds=[write_end],
        preexec_fn=prepare,
    )
    assert process.wait() == 0
    os.close(read_end)
    os.close(write_end)
    start, stop = standins.events()
    assert before <= start["time_ns"] <= stop["time_ns"] <= time.monotonic_ns()
    assert (start["event"], start["program"], start["pid"]) == ("start", "td_align", process.pid)
    assert (start["ppid"], start["pgid"], start["sid"]) == (os.getpid(), process.pid, process.pid)
    assert start["argv"][0] == str(standins.folder / "td_align")
    assert [text.encode("latin-1") for text in start["argv"][1:]] == [argument]
    assert start["isatty"] == [False] * 3 and start["stdio"] == ["/dev/null"] * 3
    assert start["descriptors"] == [write_end]
    assert start["ignored"] == [signal.SIGHUP, signal.SIGPIPE]
    assert start["blocked"] == [signal.SIGUSR2, signal.SIGTERM]
    assert (stop["event"], stop["status"]) == ("exit", 0)


def test_record_of_closed_and_mixed_standard_descriptors(standins):
    terminal = Terminal()
    standins.set_behaviour("td_align", "record=events.jsonl")

    def prepare():
        reset_signals()
        os.close(0)

    standins.start("td_align", stdout=terminal.slave, preexec_fn=prepare).wait()
    name = os.ttyname(terminal.slave)
    terminal.close()
    start = standins.events()[0]
    assert start["isatty"] == [False, True, False]
    assert start["stdio"][:2] == ["", name] and start["stdio"][2].startswith("pipe:")
    assert (start["descriptors"], start["ignored"], start["blocked"]) == ([], [], [])


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_record_of_a_stop(standins, number):
    standins.set_behaviour("td_receiver", "record=events.jsonl status=5")
    process = standins.start("td_receiver")
    standins.wait_event("start")
    before = time.monotonic_ns()
    end(process, number)
    _, stop, last = standins.events()
    assert (stop["event"], stop["signal"]) == ("stop", number)
    assert (last["event"], last["status"]) == ("exit", 5)
    assert before <= stop["time_ns"] <= last["time_ns"]


def test_a_pending_sigint_is_taken_before_a_pending_sigterm(standins):
    """As after Ctrl-C at a terminal, which the launcher's SIGTERM follows immediately."""
    standins.set_behaviour("td_receiver", "record=events.jsonl")
    process = standins.start("td_receiver")
    standins.wait_event("start")
    process.send_signal(signal.SIGSTOP)
    status = psutil.Process(process.pid).status
    wait_until(lambda: status() == psutil.STATUS_STOPPED, "its suspension")
    process.send_signal(signal.SIGINT)
    process.send_signal(signal.SIGTERM)
    end(process, signal.SIGCONT)
    assert [row["signal"] for row in standins.events() if row["event"] == "stop"] == [signal.SIGINT]


def test_programs_that_share_a_file_write_complete_lines(standins):
    words = {"TD_STANDIN_ALIGN": "record=events.jsonl"}
    argument = "x" * 3000
    processes = [
        standins.start("td_align", argument, environment=words, stdout=subprocess.DEVNULL)
        for _ in range(12)
    ]
    assert [process.wait() for process in processes] == [0] * 12
    events = standins.events()
    assert sorted(row["pid"] for row in events) == sorted([p.pid for p in processes] * 2)
    assert all(row["argv"][1] == argument for row in events if row["event"] == "start")
