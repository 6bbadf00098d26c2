"""A terminal that is closed during start-up.

It is no longer recognised as a terminal then. But the run was started in one, so it ends and never shows an
interface.
"""

import socket
from signal import SIGHUP, SIGTERM

import console
import pytest
from blocked_stderr import BlockedStderr
from component_events import exits, kill, stops, wait_for_start
from console import RESTARTING
from deadline import wait_until
from inherited_signals import start_with_signals
from interface import install_interface, start_interface
from probe_tools import record_and_probe


class OfferedInterface:
    """An interface that the launcher can find, but should not show; see tests/scripted_gui."""

    def __init__(self, suite, listener):
        install_interface(suite)
        path = str(suite.folder / "interface.socket")
        self.environment = {**suite.environment, "TD_SCRIPTED_GUI": path}
        self._listener = listener
        listener.bind(path)
        listener.listen()
        listener.setblocking(False)

    def was_shown(self):
        try:
            self._listener.accept()[0].close()
        except BlockingIOError:
            return False
        return True


@pytest.fixture
def interface(suite):
    with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as listener:
        yield OfferedInterface(suite, listener)


class HeldRun:
    """A run in a terminal, blocked during start-up at the message that the sender is missing."""

    def __init__(self, suite, interface, ignored=()):
        self._suite = suite
        self._interface = interface
        self._errors = BlockedStderr()
        suite.record()
        suite.component("sender").unlink()
        self.run = start_with_signals(
            suite,
            *(*suite.ports_options, "--no-browser"),
            ignored=ignored,
            environment=interface.environment,
            stderr=self._errors.writing,
            terminal="all",
        )
        wait_for_start(suite, "receiver")  # the hub has answered

    def hang_up_and_release(self):
        self.run.hang_up()
        self._errors.release()

    def check_end(self, messages=""):
        """Checks the end of the run. `messages`: what it printed after the message that blocked it."""
        assert self.run.wait() == 0
        sender = self._suite.component("sender")
        no_sender = f"Tandrel: could not start the sender ({sender})\n"
        assert self._errors.text() == no_sender + messages
        assert not self._interface.was_shown()
        assert stops(self._suite) == ["td_receiver", "td_hub"]
        assert self._suite.processes() == []


def test_during_the_wait_for_the_hub(suite, interface):
    suite.set_behaviour("hub", "answer-after=5000")
    suite.record()
    record_and_probe(suite)
    run = suite.start(*suite.ports_options, environment=interface.environment, terminal="all")
    wait_for_start(suite, "hub")
    wait_until(lambda: suite.calls("curl"), "a probe")
    run.hang_up()
    assert run.wait() == 1
    assert not interface.was_shown()
    alert = console.alert_script(console.hub_silent(suite.http)).encode()
    assert suite.calls("osascript") == [[b"-e", alert]]
    assert stops(suite) == ["td_hub"]
    assert len(exits(suite, "hub")) == len(suite.events("start")) == 1
    assert suite.processes() == []


def test_after_the_hub_has_answered(suite, interface):
    held = HeldRun(suite, interface)
    held.hang_up_and_release()
    held.check_end()


def test_a_run_that_ignores_the_hang_up_goes_on_as_a_console_run(suite, interface):
    held = HeldRun(suite, interface, ignored=[SIGHUP])
    held.hang_up_and_release()
    kill(suite, "receiver")
    wait_for_start(suite, "receiver", 2)
    held.run.signal(SIGTERM)
    held.check_end(RESTARTING.format("receiver"))


def test_without_a_terminal_the_interface_is_shown_although_the_hub_answers_late(suite):
    suite.set_behaviour("hub", "answer-after=1500")
    interface = start_interface(suite)
    assert interface.ask("config")["main_thread"]
    assert interface.quit() == 0
