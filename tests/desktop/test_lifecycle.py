"""What leaves the interface up: signals, and a hub that keeps exiting."""

from signal import SIGINT, SIGTERM

import pytest
from console import LEFT_STOPPED


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
