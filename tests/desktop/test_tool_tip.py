"""The icon's tool tip; a panel on the bus shows it itself."""

import pytest
from deadline import wait_until


@pytest.mark.parametrize("place", ["floating", "tray"])
def test_it_is_shown_at_the_pointer_until_that_leaves(running, place):
    if place == "tray":
        running.docked()
    icon = running.menu_bar.icon()
    running.screen.move(icon.x + icon.width // 2, icon.y + icon.height // 2)
    tip = wait_until(lambda: running.menu_bar.windows_but(icon), "the tool tip")[0]
    assert tip in [window.rect for window in running.accessibility.windows() if window.name == "Tandrel"]
    running.screen.move(100, 600)
    wait_until(lambda: len(running.menu_bar.windows()) == 1, "the end of the tool tip")
