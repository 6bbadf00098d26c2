"""Fixtures of the desktop tests: a launcher with its menu-bar interface on a private screen."""

import sys
from pathlib import Path

import pytest

# The desktop tests share the support modules of the system tests.
sys.path.insert(0, str(Path(__file__).parents[1] / "system"))

from components import COMPONENTS  # noqa: E402
from desktop import Desktop  # noqa: E402


@pytest.fixture
def desktop(request):
    """A private screen and a private folder with everything in it; fails when anything is left.

    Its parameter, if any, is whether there is a window manager.
    """
    made = Desktop(getattr(request, "param", True))
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
