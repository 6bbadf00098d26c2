"""A run without a terminal: behind the interface where there is one, else as in a console."""

import os
import shutil
import signal
from pathlib import Path
from signal import SIGHUP, SIGINT, SIGTERM

import console
import pytest
from history import RESTARTING, BlockedErrors, is_gone, kill, starts, stops, wait_for_start
from interface import COMPONENTS, MODULES, start_up
from suite import wait_until

STOP_ORDER = ["td_sender", "td_receiver", "td_hub"]


def ends_of(output):
    return output.count(b"Tandrel: stopping..."), output.count(b"Tandrel: stopped.")


def wait_for_components(suite):
    for name in COMPONENTS:
        wait_for_start(suite, name)


def has_stopped_everything(suite, run):
    """Whether a run ended with its two lines, once, and stopped the components in order, once."""
    assert run.output.endswith(console.STOPPED)
    assert ends_of(run.output) == (1, 1)
    assert stops(suite) == STOP_ORDER
    assert not any(map(suite.processes, COMPONENTS))
    return True


@pytest.mark.parametrize("commands", [["quit", "return"], ["return"], ["quit", "exit"]])
def test_ways_to_end(suite, commands):
    interface = start_up(suite)
    for command in commands:
        interface.ask(command)
    assert interface.wait() == 0
    assert interface.errors == b""
    assert has_stopped_everything(suite, interface)


def test_quit_stops_everything_while_the_interface_is_up(suite):
    interface = start_up(suite)
    interface.ask("quit")
    interface.wait_for("Tandrel: stopped.\n")
    assert has_stopped_everything(suite, interface)
    assert interface.running() == []
    for _ in range(2):
        interface.ask("quit")
    assert interface.leave() == 0
    assert has_stopped_everything(suite, interface)


@pytest.mark.parametrize("command", ["quit", "return"])
def test_an_end_during_a_restart_leaves_nothing_behind(suite, command):
    errors = BlockedErrors()
    interface = start_up(suite, stderr=errors.writing)
    sender = kill(suite, "sender")
    wait_until(lambda: is_gone(sender), "the supervisor to find the sender")
    interface.send(command)
    interface.wait_for("stopping..." if command == "quit" else "Ctrl-C here")
    errors.release()
    interface.receive()
    assert (interface.leave() if command == "quit" else interface.wait()) == 0
    assert errors.text() == RESTARTING.format("sender")
    assert ends_of(interface.output) == (1, 1)
    assert stops(suite)[-2:] == ["td_receiver", "td_hub"]
    assert suite.processes() == []


@pytest.mark.parametrize("number", [SIGINT, SIGTERM, SIGHUP])
def test_a_signal_ends_supervision_and_nothing_else(suite, number):
    interface = start_up(suite)
    threads = interface.threads()
    interface.signal(number)
    wait_until(lambda: interface.threads() < threads, "the supervisor's end")
    assert interface.running() == COMPONENTS
    kill(suite, "receiver")
    interface.ask("restart", "sender")
    wait_for_start(suite, "sender", 2)
    interface.signal(number)
    assert len(starts(suite, "receiver")) == 1
    assert interface.quit() == 0
    assert interface.errors == b""
    assert ends_of(interface.output) == (1, 1)
    assert stops(suite) == ["td_sender", "td_sender", "td_hub"]


def test_without_threads_the_run_ends_and_leaves_nothing_behind(suite):
    suite.record()
    shutil.copy2(MODULES / "tdgui.so", suite.folder / "tdgui.so")
    environment = {**suite.environment, "TD_SCRIPTED_GUI_MODE": "no-threads"}
    environment["TD_SCRIPTED_GUI"] = "-"
    run = suite.start(*suite.ports_options, "--no-browser", terminal=None, environment=environment)
    assert run.wait() == -signal.SIGABRT
    assert b"thread constructor failed" in run.errors
    assert ends_of(run.output) == (0, 0)
    assert suite.processes() == []


def test_components_inherit_nothing_of_the_interface(suite):
    """Not even the interface's connection to this test, which is left open for others."""
    interface = start_up(suite)
    held = os.listdir(f"/proc/{interface.pid}/fd")
    assert len(held) > 3
    for name in COMPONENTS:
        interface.ask("restart", name)
        wait_for_start(suite, name, 2)
        kill(suite, name)
        wait_for_start(suite, name, 3)
    for start in suite.events("start"):
        assert start["descriptors"] == [], start
        assert start["stdio"] == ["/dev/null"] * 3
        assert start["ppid"] == interface.pid
        assert start["sid"] == start["pgid"] == start["pid"]
        assert start["blocked"] == []
        assert start["ignored"] == starts(suite, "hub")[0]["ignored"]
    assert interface.quit() == 0


@pytest.mark.parametrize("terminal", ["input", "output"])
def test_with_a_terminal_no_interface_is_loaded(suite, terminal):
    shutil.copy2(MODULES / "tdgui.so", suite.folder / "tdgui.so")
    suite.record()
    environment = {**suite.environment, "TD_SCRIPTED_GUI": "-"}
    run = suite.start_up("--no-browser", terminal=terminal, environment=environment)
    wait_for_components(suite)
    kill(suite, "sender")
    wait_for_start(suite, "sender", 2)  # so the supervisor is at work, and the mode is chosen
    assert "tdgui.so" not in Path(f"/proc/{run.pid}/maps").read_text()
    assert run.stop() == 0
    assert ends_of(run.output) == (1, 1)


def unavailable(suite):
    shutil.copy2(MODULES / "tdgui.so", suite.folder / "tdgui.so")


def no_module(suite):
    assert not (suite.folder / "tdgui.so").exists()


def no_library(suite):
    (suite.folder / "tdgui.so").write_text("not a library\n")


def empty_file(suite):
    (suite.folder / "tdgui.so").touch()


def folder(suite):
    (suite.folder / "tdgui.so").mkdir()


def incomplete(suite):
    shutil.copy2(MODULES / "incomplete.so", suite.folder / "tdgui.so")


@pytest.mark.parametrize(
    "make_interface", [unavailable, no_module, no_library, empty_file, folder, incomplete]
)
def test_without_an_interface_the_run_goes_on_as_in_a_console(suite, make_interface):
    make_interface(suite)
    suite.record()
    environment = {**suite.environment, "TD_SCRIPTED_GUI_MODE": "unavailable"}
    run = suite.start_up("--no-browser", terminal=None, environment=environment)
    wait_for_components(suite)
    kill(suite, "receiver")
    wait_for_start(suite, "receiver", 2)
    assert run.stop(SIGTERM) == 0
    assert run.errors.decode() == RESTARTING.format("receiver")
    assert has_stopped_everything(suite, run)


@pytest.mark.parametrize("number", [SIGINT, SIGTERM, SIGHUP])
def test_a_run_without_terminal_and_interface_ends_by_a_signal(suite, number):
    suite.record()
    run = suite.start_up("--no-browser", terminal=None)
    wait_for_components(suite)
    assert run.stop(number) == 0
    assert run.errors == b""
    assert has_stopped_everything(suite, run)


def test_the_interface_is_looked_for_beside_the_launcher_only(suite):
    """Not in the current folder."""
    elsewhere = suite.folder / "elsewhere"
    elsewhere.mkdir()
    shutil.copy2(MODULES / "tdgui.so", elsewhere / "tdgui.so")
    suite.record()
    environment = {**suite.environment, "TD_SCRIPTED_GUI": "-"}
    run = suite.start_up("--no-browser", terminal=None, cwd=elsewhere, environment=environment)
    wait_for_components(suite)
    assert run.stop(SIGTERM) == 0
    assert has_stopped_everything(suite, run)


def test_an_interface_is_not_reached_when_the_hub_does_not_start(suite):
    suite.behave("hub", "exit-at-once status=1")
    shutil.copy2(MODULES / "tdgui.so", suite.folder / "tdgui.so")
    environment = {**suite.environment, "TD_SCRIPTED_GUI": "-"}
    run = suite.start(*suite.ports_options, terminal=None, environment=environment)
    assert run.wait() == 1
    assert run.errors.decode() == console.hub_silent(suite.http) + "\n"
    assert ends_of(run.output) == (0, 0)
