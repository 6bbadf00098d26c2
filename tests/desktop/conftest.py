"""Fixtures of the desktop tests: a launcher with its menu-bar interface on a private screen."""

from collections import namedtuple

import pytest
from component_events import KILL_DELAY, stops, wait_for_start
from components import COMPONENTS, STOP_ORDER
from compositor import Compositor
from deadline import wait_until
from desktop import Desktop

Shown = namedtuple("Shown", "desktop menu")


class SlowSender:
    """A sender that ignores SIGTERM, so that it is killed; the next one that is started does not."""

    def __init__(self, suite):
        self._suite = suite
        suite.set_behaviour("sender", "ignore-sigterm")

    def wait_until_asked(self):
        """Waits until it has got SIGTERM."""
        wait_until(lambda: self._suite.events("ignored", "td_sender"), "SIGTERM")
        self._suite.set_behaviour("sender", "record=events.jsonl")

    def check_stopped(self, restarted=False):
        """Checks that the receiver and the hub were stopped after its end; if all components were
        `restarted`, then those, in order."""
        asked = self._suite.events("ignored", "td_sender")[0]["time_ns"]
        assert self._suite.events("stop", "td_receiver")[0]["time_ns"] - asked > KILL_DELAY // 2
        stopped = stops(self._suite)
        assert stopped[:2] == ["td_receiver", "td_hub"]
        # A component that has just been started may end before it records anything.
        later = [name for name in STOP_ORDER if restarted and name in stopped[2:]]
        assert stopped[2:] == later


@pytest.fixture
def desktop(request):
    """A private screen and a private folder with everything in it; fails when anything is left.

    Its parameter, if any, is a dictionary of options for Desktop.
    """
    made = Desktop(**getattr(request, "param", {}))
    yield made
    left = made.close()
    assert not left, f"left running: {left}"


@pytest.fixture
def running(desktop):
    """A launcher whose components record what happens to them, its icon shown."""
    desktop.suite.record(*COMPONENTS)
    desktop.start()
    yield desktop
    if desktop.run.process.poll() is None:
        assert desktop.quit() == 0


@pytest.fixture(params=["floating", "tray", "bus"])
def shown(request, desktop):
    """A running launcher and its menu: our own at the icon, or the one that the panel shows."""
    desktop.suite.record(*COMPONENTS)
    host = desktop.host() if request.param == "bus" else None
    tray = desktop.tray() if request.param == "tray" else None
    desktop.launch(*desktop.suite.ports_options)
    if tray:
        desktop.wait_until_docked(tray)
    menu = host.icon() if host else desktop.menu_bar
    yield Shown(desktop, menu)
    if desktop.run.process.poll() is None:
        menu.choose("Quit")
        assert desktop.run.wait() == 0


@pytest.fixture
def compositor(desktop):
    """A Wayland compositor, and components that record what happens to them."""
    desktop.suite.record(*COMPONENTS)
    compositor = Compositor(desktop)
    yield compositor
    compositor.end()


@pytest.fixture
def slow_sender(desktop):
    """The sender of a launcher that is started afterwards."""
    return SlowSender(desktop.suite)


@pytest.fixture
def in_panel(desktop):
    """A running launcher whose icon is in a panel on the bus, and that panel."""
    desktop.suite.record(*COMPONENTS)
    host = desktop.host()
    desktop.launch(*desktop.suite.ports_options)
    host.icon()
    desktop.menu_bar.wait_until_heard()
    yield desktop, host
    if desktop.run.process.poll() is None:
        host.icon().choose("Quit")
        assert desktop.run.wait() == 0


@pytest.fixture
def busy(in_panel):
    """A launcher in a panel that has just begun to stop a sender for which it waits 4 seconds."""
    desktop, host = in_panel
    desktop.suite.set_behaviour("sender", "ignore-sigterm record=events.jsonl")
    before = desktop.suite.process("sender").pid
    host.icon().choose("Sender", "Restart")
    desktop.suite.wait_for_restart("sender", before)
    wait_for_start(desktop.suite, "sender", 2)
    host.icon().choose("Sender", "Stop")
    wait_until(lambda: desktop.suite.events("ignored"), "the sender's signal")
    return desktop
