"""What leaves the interface up: signals, and a hub that keeps exiting."""

from signal import SIGINT, SIGTERM

import pytest
from component_events import wait_for_start
from console import LEFT_STOPPED
from test_components import ALL_RUNNING


@pytest.mark.parametrize("number", [SIGINT, SIGTERM])
def test_a_signal_leaves_the_interface_and_the_components_up(running, number):
    before = running.pids()
    running.run.signal(number)
    assert running.menu_bar.states() == ALL_RUNNING
    assert running.pids() == before
    assert running.quit() == 0
    assert running.run.output.count(b"Tandrel: stopping...") == 1


def test_a_hub_that_keeps_exiting_leaves_the_interface_up(running):
    wait_for_start(running.suite, "hub")
    running.suite.set_behaviour("hub", "exit-at-once")
    running.suite.kill("hub")
    running.run.wait_for(LEFT_STOPPED.format("hub"), "errors")
    assert running.menu_bar.states() == {**ALL_RUNNING, "Hub": "stopped"}
