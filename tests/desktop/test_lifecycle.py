"""What leaves the interface up (signals, a hub that keeps exiting), and what else ends it."""

from signal import SIGINT, SIGTERM, SIGUSR2

import pytest
from component_events import stops
from components import COMPONENTS, STOP_ORDER
from console import LEFT_STOPPED, STOPPED
from preload import preloaded


@pytest.mark.parametrize("number", [SIGINT, SIGTERM])
def test_a_signal_leaves_the_interface_and_the_components_up(running, number):
    before = running.pids()
    running.run.signal(number)
    assert set(running.menu_bar.states().values()) == {"green"}
    assert running.pids() == before
    assert running.quit() == 0
    assert running.run.output.count(b"Tandrel: stopping...") == 1


def test_a_hub_that_keeps_exiting_leaves_the_interface_up(running):
    running.suite.set_behaviour("hub", "exit-at-once")
    running.suite.kill("hub")
    running.run.wait_for(LEFT_STOPPED.format("hub"), "errors")
    states = running.menu_bar.states()
    assert states["header"] == "orange" and states["hub"] == "red"
    assert states["receiver"] == "green" and states["sender"] == "green"


def check_everything_stopped(run, suite):
    assert run.output.endswith(STOPPED) and run.output.count(STOPPED) == 1
    assert stops(suite) == STOP_ORDER


def test_an_application_told_to_terminate_stops_everything(desktop):
    """Not by Quit: the application ends the process by itself."""
    desktop.suite.record(*COMPONENTS)
    desktop.change(preloaded(desktop.suite.folder, TD_TERMINATE="1"))
    run = desktop.start()
    run.signal(SIGUSR2)
    assert run.wait() == 0
    check_everything_stopped(run, desktop.suite)
