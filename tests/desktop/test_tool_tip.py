"""The icon's tool tip."""

import pytest
from deadline import wait_until
from screen import SIZE, Rect
from test_tray import FLOATING, wait_until_at
from tray import Tray

GAP = 4  # between icon and tool tip


def tool_tips(desktop):
    """The rectangles of all windows but the icon's."""
    icon = desktop.menu_bar.icon_window()
    return [rect for rect in desktop.menu_bar.windows().values() if rect != icon]


def point_at_icon(desktop):
    icon = desktop.menu_bar.icon()
    desktop.screen.move(icon.x + icon.width // 2, icon.y + icon.height // 2)


def show(desktop):
    """Points at the icon; returns the tool tip's rectangle once it is drawn."""
    point_at_icon(desktop)
    (tip,) = wait_until(lambda: tool_tips(desktop), "the tool tip")
    inside = Rect(tip.x + 2, tip.y + 2, tip.width - 4, tip.height - 4)
    wait_until(lambda: desktop.screen.words(inside) == "Tandrel", "the tool tip's text")
    return tip


def wait_until_hidden(desktop):
    wait_until(lambda: not tool_tips(desktop), "the end of the tool tip")


def test_it_is_shown_below_the_icon_until_the_pointer_leaves(running):
    wait_until_at(running, FLOATING)
    tip = show(running)
    assert tip.y == FLOATING.y + FLOATING.height + GAP
    assert tip.x + tip.width == SIZE[0]  # no further to the right than the screen
    running.screen.move(100, 600)
    wait_until_hidden(running)


@pytest.mark.parametrize("desktop", [False], indirect=True)
def test_it_is_above_an_icon_at_the_bottom(running):
    running.screen.set_root_property("_NET_WORKAREA", 0, 740, 500, 28)
    bottom = FLOATING._replace(x=470, y=746)
    wait_until_at(running, bottom)
    tip = show(running)
    assert tip.y + tip.height == bottom.y - GAP
    assert abs(tip.x + tip.width / 2 - (bottom.x + bottom.width / 2)) <= 1
    running.screen.move(100, 600)
    wait_until_hidden(running)


def test_it_hides_when_the_menu_opens(running):
    show(running)
    menu = running.menu_bar.open()
    assert tool_tips(running) == [menu.rect]
    running.menu_bar.dismiss(menu)


def test_it_hides_with_an_icon_that_goes(running):
    show(running)
    tray = Tray(running.screen)
    tray.embed(tray.asked(), 22)
    wait_until_hidden(running)
    show(running)
    tray.die()
    wait_until_at(running, FLOATING)


def test_a_pointer_that_only_passes_the_icon_leaves_no_tool_tip(running):
    icon = running.menu_bar.icon()
    x, y = str(icon.x + icon.width // 2), str(icon.y + icon.height // 2)
    crossing = ["mousemove", x, y, "mousemove", "100", "600"]
    running.screen.run("xdotool", *crossing * 3)
    show(running)
    running.screen.move(100, 600)
    wait_until_hidden(running)
