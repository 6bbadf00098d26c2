"""Fixtures of the desktop tests: a launcher with its menu-bar interface on a private screen."""

import sys
from collections import namedtuple
from pathlib import Path

import pytest

# The desktop tests share the support modules of the system tests.
sys.path.insert(0, str(Path(__file__).parents[1] / "system"))

from components import COMPONENTS  # noqa: E402
from desktop import Desktop  # noqa: E402

Shown = namedtuple("Shown", "desktop menu")


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
