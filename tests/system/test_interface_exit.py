"""An interface that calls exit(), as an application's Quit may, on any thread."""

import time

import pytest
from blocked_stderr import BlockedStderr
from component_events import KILL_DELAY, ends, kill_until_reaped, orderly_ends, stops
from components import STOP_ORDER
from console import RESTARTING, STOPPED
from deadline import wait_until
from interface import EXITING, Gate, install_interface, start_interface

STATUS = 5


class HeldExit(Gate):
    """An exit() on another thread than the main one, which waits for `release`."""

    def __init__(self, suite, interface):
        super().__init__(suite, "exit")
        interface.ask("exit_on_thread", STATUS, self.fifo)


def check_ended(suite, interface):
    """Checks that the run ended with the status of exit(), reported its end once, and left nothing behind."""
    assert interface.wait() == STATUS
    assert interface.output.endswith(STOPPED)
    assert interface.output.count(b"Tandrel: stop") == 2
    assert suite.processes() == []


@pytest.fixture(params=["exit", "exit_on_thread"])
def exit_command(request):
    return request.param


def test_an_exit_stops_everything_in_order(suite, exit_command):
    interface = start_interface(suite)
    interface.ask(exit_command, STATUS)
    check_ended(suite, interface)
    assert interface.errors == b""
    assert ends(suite) == orderly_ends(*STOP_ORDER)


def test_an_exit_after_quit_stops_nothing_again(suite, exit_command):
    interface = start_interface(suite)
    interface.ask("quit")
    assert ends(suite) == orderly_ends(*STOP_ORDER)
    interface.ask(exit_command, STATUS)
    check_ended(suite, interface)
    assert ends(suite) == orderly_ends(*STOP_ORDER)


def test_an_exit_during_quit_waits_until_everything_is_stopped(suite):
    suite.set_behaviour("sender", "ignore-sigterm")
    interface = start_interface(suite)
    held = HeldExit(suite, interface)
    quitting = time.monotonic_ns()
    interface.send("quit")
    wait_until(lambda: suite.events("ignored"), "the sender to get its SIGTERM")
    held.release()
    check_ended(suite, interface)
    assert ends(suite) == [("ignored", "td_sender"), *orderly_ends("td_receiver", "td_hub")]
    assert suite.events("stop", "td_receiver")[0]["time_ns"] - quitting >= KILL_DELAY


def test_an_exit_while_a_component_is_stopped_from_the_menu(suite):
    suite.set_behaviour("receiver", "ignore-sigterm")
    interface = start_interface(suite)
    held = HeldExit(suite, interface)
    interface.send("stop", "receiver")
    wait_until(lambda: suite.events("ignored"), "the receiver to get its SIGTERM")
    held.release()
    check_ended(suite, interface)
    assert ends(suite) == [("ignored", "td_receiver"), *orderly_ends("td_sender", "td_hub")]


def test_an_exit_during_a_restart_leaves_nothing_behind(suite, exit_command):
    errors = BlockedStderr()
    interface = start_interface(suite, stderr=errors.writing)
    kill_until_reaped(suite, "sender")
    interface.ask(exit_command, STATUS)
    interface.wait_for("stopping...")
    errors.release()
    check_ended(suite, interface)
    assert errors.text() == RESTARTING.format("sender")
    # The sender may be stopped before it records anything.
    assert stops(suite)[-2:] == ["td_receiver", "td_hub"]


def test_an_exit_when_the_interface_is_run_leaves_nothing_behind(suite):
    suite.record("hub")
    install_interface(suite)
    environment = {**suite.environment, **EXITING, "TD_SCRIPTED_GUI_MODE": "exit-early"}
    environment["TD_SCRIPTED_GUI"] = "-"
    run = suite.start(*suite.ports_options, "--no-browser", terminal=None, environment=environment)
    check_ended(suite, run)
    assert ends(suite) == orderly_ends("td_hub")


def test_everything_is_stopped_before_an_exit_handler_of_the_interface_runs(suite, exit_command):
    gate = Gate(suite, "exit")
    environment = {"TD_SCRIPTED_GUI_EXIT": str(gate.fifo)}
    interface = start_interface(suite, environment=environment)
    interface.ask(exit_command, STATUS)
    interface.wait_for("Tandrel: stopped.")
    gate.release()
    check_ended(suite, interface)
    assert ends(suite) == orderly_ends(*STOP_ORDER)


def test_nothing_is_started_after_an_exit_has_stopped_everything(suite):
    interface = start_interface(suite)
    held = HeldExit(suite, interface)
    for _ in range(100):
        interface.send("start", "sender")
        interface.send("restart", "receiver")
    held.release()
    check_ended(suite, interface)
