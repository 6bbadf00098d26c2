"""A run without a terminal: with an interface if there is one, otherwise as a console run."""

import shutil
import signal
import subprocess
from signal import SIGHUP, SIGINT, SIGQUIT, SIGTERM

import console
import psutil
import pytest
import system
from blocked_stderr import BlockedStderr
from component_events import (
    kill,
    kill_until_reaped,
    start_recording,
    starts,
    stops,
    wait_for_start,
)
from components import COMPONENTS, STOP_ORDER
from console import RESTARTING, UNAVAILABLE
from deadline import wait_until
from interface import install_interface, start_interface
from suite import MODULES

NO_FILE = "cannot open shared object file: No such file or directory"


def count_end_messages(output):
    """How often a run has said that it is stopping, and that it has stopped."""
    return output.count(b"Tandrel: stopping..."), output.count(b"Tandrel: stopped.")


def check_everything_stopped(suite, run):
    """Checks that a run printed its end once and stopped each component once, in order."""
    assert run.output.endswith(console.STOPPED)
    assert count_end_messages(run.output) == (1, 1)
    assert stops(suite) == STOP_ORDER
    assert not any(map(suite.processes, COMPONENTS))


@pytest.mark.parametrize("commands", [["quit", "return"], ["return"], ["quit", "exit 0"]])
def test_quit_return_and_exit_stop_everything(suite, commands):
    interface = start_interface(suite)
    for command in commands:
        interface.ask(command)
    assert interface.wait() == 0
    assert interface.errors == b""
    check_everything_stopped(suite, interface)


def test_quit_stops_everything_while_the_interface_is_up(suite):
    interface = start_interface(suite)
    interface.ask("quit")
    interface.wait_for("Tandrel: stopped.\n")
    check_everything_stopped(suite, interface)
    assert interface.running() == []
    for _ in range(2):
        interface.ask("quit")
    assert interface.leave() == 0
    check_everything_stopped(suite, interface)


@pytest.mark.parametrize("command", ["quit", "return"])
def test_an_end_during_a_restart_leaves_nothing_behind(suite, command):
    errors = BlockedStderr()
    interface = start_interface(suite, stderr=errors.writing)
    kill_until_reaped(suite, "sender")
    interface.send(command)
    interface.wait_for("stopping..." if command == "quit" else "Ctrl-C here")
    errors.release()
    interface.receive()
    assert (interface.leave() if command == "quit" else interface.wait()) == 0
    assert errors.text() == RESTARTING.format("sender")
    assert count_end_messages(interface.output) == (1, 1)
    assert stops(suite)[-2:] == ["td_receiver", "td_hub"]
    assert suite.processes() == []


@pytest.mark.parametrize("number", [SIGINT, SIGTERM, SIGHUP, SIGQUIT])
def test_a_signal_ends_supervision_and_nothing_else(suite, number):
    interface = start_interface(suite)
    threads = interface.threads()
    interface.signal(number)
    wait_until(lambda: interface.threads() < threads, "the supervisor's end")
    assert interface.running() == COMPONENTS
    kill(suite, "receiver")
    assert interface.running() == COMPONENTS  # only supervision notices an exit
    interface.ask("restart", "sender")
    wait_for_start(suite, "sender", 2)
    interface.signal(number)
    assert len(starts(suite, "receiver")) == 1
    assert interface.quit() == 0
    assert interface.errors == b""
    assert count_end_messages(interface.output) == (1, 1)
    assert stops(suite) == ["td_sender", "td_sender", "td_hub"]


@system.needs("signals of others")
def test_the_main_thread_blocks_no_signals_while_the_interface_is_up(suite):
    """Otherwise it blocks those that end a run, so that they interrupt the supervisor's pause."""
    interface = start_interface(suite)
    assert system.signal_set(interface.pid, "Blk") == set()
    assert interface.quit() == 0


@system.needs("signals of others")
def test_the_supervisors_thread_gets_the_signals_without_an_interface(suite):
    run = start_recording(suite, terminal=None)
    ending = {SIGINT, SIGTERM, SIGHUP, SIGQUIT}
    wait_until(lambda: system.signal_set(run.pid, "Blk") == ending, "the end of the search")

    def is_anywhere_unblocked():
        threads = [thread.id for thread in psutil.Process(run.pid).threads()]
        return any(system.signal_set(thread, "Blk") == set() for thread in threads)

    wait_until(is_anywhere_unblocked, "the supervisor's thread")
    assert run.stop(SIGTERM) == 0


@system.needs("thread limit")
@pytest.mark.parametrize("interface", ["-", ""], ids=["interface", "no interface"])
def test_without_threads_the_run_ends_and_leaves_nothing_behind(suite, interface):
    suite.record()
    shutil.copy2(MODULES / "launcher", suite.launcher)  # which is linked with the interface
    environment = {**suite.environment, "TD_SCRIPTED_GUI_MODE": "no-threads"}
    environment["TD_SCRIPTED_GUI"] = interface
    run = suite.start(*suite.ports_options, "--no-browser", terminal=None, environment=environment)
    assert run.wait() == -signal.SIGABRT
    assert b"thread constructor failed" in run.errors
    assert count_end_messages(run.output) == (0, 0)
    assert suite.processes() == []


def test_components_inherit_nothing_of_the_interface(suite):
    """Not even the interface's connection to this test, which is not close-on-exec."""
    interface = start_interface(suite)
    assert len(system.descriptors(interface.pid)) > 3
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


def test_components_keep_the_environment_that_the_interface_changes(suite):
    interface = start_interface(suite)
    environment = psutil.Process(interface.pid).environ()
    interface.ask("change_environment")
    kill(suite, "receiver")  # the supervisor restarts it; the menu restarts the sender
    interface.ask("restart", "sender")
    for name in ("receiver", "sender"):
        assert psutil.Process(wait_for_start(suite, name, 2)["pid"]).environ() == environment
    assert interface.quit() == 0


def unavailable(suite):
    """An interface that TD_SCRIPTED_GUI_MODE makes unusable; it prints nothing."""
    install_interface(suite)


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


def library_missing(suite):
    """An interface linked with a library that is missing."""
    library = suite.folder / "libabsent.so"
    link = ["cc", "-shared", "-nostdlib", "-x", "c", "/dev/null", "-Wl,--no-as-needed", "-o"]
    subprocess.run([*link, library], check=True)
    subprocess.run([*link, "tdgui.so", "-x", "none", library.name], cwd=suite.folder, check=True)
    library.unlink()


@pytest.mark.parametrize(
    "make_interface, reason",
    [
        (unavailable, None),
        *(
            pytest.param(make, reason, marks=system.needs("interface module"))
            for make, reason in (
                (no_module, None),
                (no_library, "{module}: file too short"),
                (empty_file, "{module}: file too short"),
                (folder, "{module}: cannot read file data: Is a directory"),
                (incomplete, "{module}: undefined symbol: tdgui_run"),
                (library_missing, f"libabsent.so: {NO_FILE}"),
            )
        ),
    ],
)
def test_without_an_interface_the_run_goes_on_as_a_console_run(suite, make_interface, reason):
    make_interface(suite)
    environment = {**suite.environment, "TD_SCRIPTED_GUI_MODE": "unavailable"}
    run = start_recording(suite, terminal=None, environment=environment)
    kill(suite, "receiver")
    wait_for_start(suite, "receiver", 2)
    assert run.stop(SIGTERM) == 0
    message = UNAVAILABLE.format(reason.format(module=suite.folder / "tdgui.so")) if reason else ""
    assert run.errors.decode() == message + RESTARTING.format("receiver")
    check_everything_stopped(suite, run)


@system.needs("interface module")
@pytest.mark.parametrize("name", ["$ORIGIN", "${LIB}", "$PLATFORM $LIB"])
def test_the_interface_is_found_in_a_folder_whose_name_the_dynamic_loader_would_replace(
    suite_in, name
):
    interface = start_interface(suite_in(name))
    assert interface.quit() == 0
    assert interface.errors == b""


@pytest.mark.parametrize("number", [SIGINT, SIGTERM, SIGHUP, SIGQUIT])
def test_a_signal_ends_a_run_without_terminal_and_interface(suite, number):
    run = start_recording(suite, terminal=None)
    assert run.stop(number) == 0
    assert run.errors == b""
    check_everything_stopped(suite, run)


@system.needs("interface module")
def test_the_interface_is_loaded_from_the_launchers_folder_only(suite):
    """Not in the current folder."""
    elsewhere = suite.folder / "elsewhere"
    elsewhere.mkdir()
    install_interface(suite)
    (suite.folder / "tdgui.so").rename(elsewhere / "tdgui.so")
    environment = {**suite.environment, "TD_SCRIPTED_GUI": "-"}
    run = start_recording(suite, terminal=None, cwd=elsewhere, environment=environment)
    assert run.stop(SIGTERM) == 0
    check_everything_stopped(suite, run)


def test_no_interface_is_loaded_when_the_hub_does_not_start(suite):
    suite.set_behaviour("hub", "exit-at-once status=1")
    install_interface(suite)
    environment = {**suite.environment, "TD_SCRIPTED_GUI": "-"}
    run = suite.start(*suite.ports_options, terminal=None, environment=environment)
    assert run.wait() == 1
    assert run.errors.decode() == console.hub_silent(suite.http) + "\n"
    assert count_end_messages(run.output) == (0, 0)
