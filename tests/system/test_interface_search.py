"""A display that blocks the search for the interface, or ends the process that searches."""

import os
import socket
import time
from signal import SIGHUP, SIGINT, SIGKILL, SIGQUIT, SIGTERM

import psutil
import pytest
import system
from component_events import kill, starts, stops, wait_for_components, wait_for_start
from components import COMPONENTS, STOP_ORDER
from console import RESTARTING, STOPPED, UNAVAILABLE, restarts_until_left_stopped
from deadline import DEADLINE, wait_until
from interface import Gate, install_interface

LIMIT = 10  # s that the launcher waits for an answer
NO_ANSWER = UNAVAILABLE.format("the display does not answer")
ENDED = UNAVAILABLE.format(f"the search for it was ended by signal {SIGKILL:d}")


class Search:
    """A run without a terminal, whose search for the interface waits for `release`."""

    def __init__(self, suite, *, interface="-", mode="", **options):
        suite.record()
        install_interface(suite)
        self._suite = suite
        self._gate = Gate(suite, "search")
        self.release = self._gate.release
        environment = {
            **suite.environment,
            "TD_SCRIPTED_GUI": str(interface),
            "TD_SCRIPTED_GUI_MODE": mode,
            "TD_SCRIPTED_GUI_SEARCH": str(self._gate.fifo),
        }
        self.run = suite.start_up("--no-browser", terminal=None, environment=environment, **options)
        wait_for_components(suite)

    def trial(self):
        """The process that searches, once it waits with all signals blocked."""

        def waits(pid):
            return system.has_loaded(pid, "tdgui.so") and SIGTERM in system.signal_set(pid, "Blk")

        def find():
            try:
                children = psutil.Process(self.run.pid).children()
                return [c.pid for c in children if c.name() == "launcher" and waits(c.pid)]
            except (psutil.NoSuchProcess, FileNotFoundError):
                return None

        return wait_until(find, "the search for the interface")[0]

    def check_restart(self, name="receiver"):
        count = len(starts(self._suite, name))
        kill(self._suite, name)
        wait_for_start(self._suite, name, count + 1)

    def check_end(self, errors, number=None):
        """Checks the end of the run, by a signal if one is given, in order and with status 0."""
        if number is not None:
            self.run.signal(number)
        assert self.run.wait() == 0
        assert self.run.errors.decode() == errors
        assert self.run.output.endswith(STOPPED)
        assert self.run.output.count(b"Tandrel: stop") == 2
        assert stops(self._suite) == STOP_ORDER
        assert self._suite.processes() == []


def test_a_component_is_restarted_meanwhile(suite):
    search = Search(suite, mode="unavailable")
    search.check_restart()
    search.release()
    search.check_restart()
    search.check_end(RESTARTING.format("receiver") * 2, SIGTERM)


def test_the_interface_of_a_late_display_is_shown(suite):
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(str(suite.folder / "interface.socket"))
        listener.listen()
        listener.settimeout(DEADLINE)
        search = Search(suite, interface=suite.folder / "interface.socket")
        search.check_restart()
        search.release()
        listener.accept()[0].close()  # and so the interface returns
    search.check_end(RESTARTING.format("receiver"))


@system.needs("interface module")
@pytest.mark.parametrize("number", [SIGINT, SIGTERM, SIGHUP, SIGQUIT])
def test_a_signal_ends_the_run(suite, number):
    search = Search(suite)
    trial = search.trial()
    signalled = time.monotonic()
    search.check_end("", number)
    assert time.monotonic() - signalled < LIMIT / 2
    assert system.is_gone(trial)


@system.needs("interface module")
def test_a_hub_that_keeps_exiting_ends_the_run(suite):
    search = Search(suite)
    trial = search.trial()
    suite.set_behaviour("hub", "exit-at-once")
    kill(suite, "hub")
    assert search.run.wait() == 0
    # On a slow machine the search may time out before the hub's sixth exit.
    errors = search.run.errors.decode().replace(NO_ANSWER, "")
    assert errors == restarts_until_left_stopped("hub")
    assert search.run.output.endswith(STOPPED)
    assert system.is_gone(trial)


@system.needs("interface module")
@pytest.mark.one_build
def test_the_search_times_out_if_the_display_does_not_answer(suite):
    started = time.monotonic()
    search = Search(suite)
    trial = search.trial()
    search.run.wait_for(NO_ANSWER, "errors")
    assert time.monotonic() - started > LIMIT
    assert system.is_gone(trial)
    search.check_restart()
    search.check_end(NO_ANSWER + RESTARTING.format("receiver"), SIGTERM)


@system.needs("interface module")
def test_a_search_that_is_killed_is_reported(suite):
    search = Search(suite)
    os.kill(search.trial(), SIGKILL)
    search.run.wait_for(ENDED, "errors")
    search.check_restart()
    search.check_end(ENDED + RESTARTING.format("receiver"), SIGINT)


@system.needs("interface module")
def test_an_exit_ends_only_the_search(suite):
    search = Search(suite, mode="exit-unanswered")
    trial = search.trial()
    search.release()
    wait_until(lambda: system.is_gone(trial), "the end of the search")
    search.check_restart()
    search.check_end(RESTARTING.format("receiver"), SIGTERM)


@system.needs("interface module")
def test_the_search_ends_with_the_launcher(suite):
    search = Search(suite)
    trial = search.trial()
    search.run.signal(SIGKILL)
    search.run.wait_for_process()
    wait_until(lambda: system.has_ended(trial), "the end of the search")
    for name in COMPONENTS:  # they keep running
        suite.process(name).kill()
    wait_until(lambda: not suite.processes(), "the end of the components")


def watches_a_process(pid):
    """Whether a process has a descriptor for another process."""
    return any("pidfd" in name for name in system.descriptors(pid).values())


@system.needs("interface module")
def test_the_search_inherits_no_descriptors_and_leaves_nothing_behind(suite):
    inherited, other = os.pipe()
    os.set_inheritable(inherited, True)
    search = Search(suite, mode="unavailable", pass_fds=[inherited], start_new_session=True)
    trial = search.trial()
    assert os.getsid(trial) == trial
    name = system.descriptors(os.getpid())[inherited]
    assert name in system.descriptors(search.run.pid).values()
    assert name not in system.descriptors(trial).values()
    wait_until(lambda: watches_a_process(search.run.pid), "the launcher to wait for the search")
    search.check_restart()
    assert starts(suite, "receiver")[-1]["descriptors"] == []
    assert starts(suite, "receiver")[-1]["blocked"] == []
    search.release()
    wait_until(lambda: system.is_gone(trial), "the end of the search")
    wait_until(lambda: not watches_a_process(search.run.pid), "the launcher to continue")
    search.check_end(RESTARTING.format("receiver"), SIGTERM)
    os.close(inherited)
    os.close(other)
