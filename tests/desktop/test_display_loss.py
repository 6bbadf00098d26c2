"""The display ends, drops the launcher or does not answer."""

from signal import SIGCONT, SIGKILL, SIGTERM

import pytest
import system
from component_events import KILL_DELAY, start_recording, stops
from components import COMPONENTS, STOP_ORDER
from console import STOPPED, UNAVAILABLE
from deadline import wait_until
from dialogs import PortsDialog
from preload import preloaded

GONE = b"Tandrel: the display is gone: quitting.\n"


def end_server(desktop):
    desktop.screen.end(SIGTERM)


def kill_server(desktop):
    desktop.screen.end(SIGKILL)


def kill_client(desktop):
    desktop.screen.disconnect(next(iter(desktop.menu_bar.windows())))


LOSSES = [end_server, kill_server, kill_client]


def check_ended_like_quit(run, suite):
    assert run.wait() == 0
    assert run.output.endswith(STOPPED) and run.output.count(STOPPED) == 1
    assert run.errors.endswith(GONE) and run.errors.count(GONE) == 1
    assert not suite.processes()


@pytest.mark.parametrize("lose", LOSSES)
@pytest.mark.parametrize("shown", ["icon", "menu", "dialog"])
def test_the_loss_of_the_display_ends_the_run_like_quit(running, lose, shown):
    if shown == "menu":
        running.menu_bar.open()
    elif shown == "dialog":
        PortsDialog(running.menu_bar)
    lose(running)
    check_ended_like_quit(running.run, running.suite)
    assert stops(running.suite) == STOP_ORDER


@pytest.mark.parametrize("lose", LOSSES)
def test_an_operation_returns_before_the_loss_ends_the_run(desktop, lose):
    suite = desktop.suite
    suite.set_behaviour("sender", "ignore-sigterm")
    suite.record(*COMPONENTS)
    desktop.start()
    desktop.menu_bar.choose("all", "restart")
    ignored = wait_until(lambda: suite.events("ignored", "td_sender"), "the sender to go on")[0]
    suite.set_behaviour("sender", "record=events.jsonl")  # the next one stops at once
    lose(desktop)
    check_ended_like_quit(desktop.run, suite)
    went_on = suite.events("stop", "td_receiver")[0]["time_ns"]
    assert went_on - ignored["time_ns"] > KILL_DELAY // 2  # the sender's end was waited for
    restarted = stops(suite)
    assert restarted[:2] == ["td_receiver", "td_hub"]
    # A component that has just been started may end before it records anything.
    assert restarted[2:] == [name for name in STOP_ORDER if name in restarted[2:]]


# The application is being made; its icon is about to be shown.
@pytest.mark.parametrize("call", ["XOpenDisplay", "xcb_get_selection_owner"])
@pytest.mark.parametrize("number", [SIGTERM, SIGKILL])
def test_the_loss_of_the_display_during_the_start(desktop, call, number):
    run = start_recording(
        desktop.suite,
        terminal=None,
        environment={
            **desktop.screen.environment,
            **preloaded(desktop.suite.folder, TD_PAUSE=call),
        },
    )
    wait_until(lambda: system.is_suspended(run.pid), f"the call of {call}")
    desktop.screen.end(number)
    run.signal(SIGCONT)
    check_ended_like_quit(run, desktop.suite)
    assert stops(desktop.suite) == STOP_ORDER


def test_a_display_that_does_not_answer_leaves_a_run_without_interface(desktop):
    desktop.screen.suspend()
    try:
        run = start_recording(
            desktop.suite, terminal=None, environment=desktop.screen.environment
        )
        run.wait_for(UNAVAILABLE.format("the display does not answer"), "errors")
        assert run.stop(SIGTERM) == 0
    finally:
        desktop.screen.resume()
    assert run.output.endswith(STOPPED) and run.output.count(STOPPED) == 1
    assert stops(desktop.suite) == STOP_ORDER
    assert not desktop.suite.processes()
