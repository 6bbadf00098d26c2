"""The icon on a desktop without a panel: always visible, and never in the way of the desktop's bars."""

import pytest
from deadline import wait_until
from menu_bar import TEAL
from screen import ANY_SIZE, Rect
from test_components import ALL_RUNNING
from test_tray import FLOATING, wait_until_at

UNMANAGED = {"managed": False}
unmanaged = pytest.mark.parametrize("desktop", [UNMANAGED], indirect=True)
TILE = (33, 33, 33)


@unmanaged
@pytest.mark.parametrize("is_composed", [False, True])
def test_the_icon_is_bars_on_a_tile_with_round_corners(desktop, is_composed):
    desktop.screen.paint(0x806040)
    if is_composed:
        desktop.screen.own("_NET_WM_CM_S0")
    desktop.start()
    wait_until_at(desktop, FLOATING)
    corners = [(x, y) for x in (0, 31) for y in (0, 31)]
    (icon,) = desktop.menu_bar.windows()
    image = desktop.screen.image(FLOATING)
    assert {image.pixel(*corner) for corner in corners} == {(0x80, 0x60, 0x40)}
    assert image.pixel(16, 2) == TILE
    assert all(abs(a - b) <= 4 for a, b in zip(image.pixel(16, 16), TEAL))
    assert desktop.quit() == 0


def test_the_icon_is_not_managed_and_takes_no_focus(running):
    cover = running.screen.cover(Rect(100, 100, 300, 300), 0)
    (icon,) = running.menu_bar.windows()
    assert not running.screen.is_managed(icon)
    assert running.menu_bar.states() == ALL_RUNNING
    assert running.screen.has_focus(cover)


@unmanaged
def test_the_icon_is_in_the_work_area_and_follows_it(running):
    wait_until_at(running, FLOATING)
    running.screen.set_root_property("_NET_WORKAREA", 0, 40, 1000, 700)
    wait_until_at(running, Rect(960, 48, 32, 32))
    assert running.menu_bar.states() == ALL_RUNNING


@unmanaged
def test_the_icon_follows_the_work_area_while_the_menu_is_open(running):
    running.menu_bar.open()
    running.screen.set_root_property("_NET_WORKAREA", 0, 40, 1000, 700)
    moved = Rect(960, 48, 32, 32)
    wait_until(lambda: running.menu_bar.icon_window() == moved, "the icon in the area")
    running.menu_bar.dismiss()


@unmanaged
@pytest.mark.parametrize(
    ("area", "place"),
    [
        ((0, 0, 0, 0), FLOATING),  # none
        ((5000, 5000, 100, 100), FLOATING),  # off the screen
        ((1, 2), FLOATING),
        ((0, 40, 10, 10), Rect(0, 48, 32, 32)),  # smaller than the icon
    ],
)
def test_the_icon_is_on_the_screen_whatever_the_work_area_is(running, area, place):
    running.screen.set_root_property("_NET_WORKAREA", 0, 40, 1000, 700)
    wait_until_at(running, Rect(960, 48, 32, 32))
    running.screen.set_root_property("_NET_WORKAREA", *area)
    wait_until_at(running, place)
    running.screen.set_root_property("_NET_WORKAREA", 0, 0, 1024, 768)  # one with room for the menu
    wait_until_at(running, FLOATING)


@pytest.mark.parametrize("desktop", [{**UNMANAGED, "server": ANY_SIZE}], indirect=True)
def test_the_icon_stays_on_a_screen_that_changes_its_size(running):
    wait_until_at(running, FLOATING)
    running.screen.resize(800, 600)
    wait_until_at(running, FLOATING._replace(x=760))
    running.screen.resize(1280, 1024)
    wait_until_at(running, FLOATING._replace(x=1240))
    assert running.menu_bar.states() == ALL_RUNNING


@pytest.mark.parametrize(("primary", "place"), [(0, FLOATING._replace(x=560)), (1, FLOATING)])
def test_the_icon_is_on_the_primary_monitor(desktop, primary, place):
    desktop.screen.split(Rect(0, 0, 600, 768), Rect(600, 0, 424, 768), primary=primary)
    desktop.start()
    wait_until_at(desktop, place)
    assert desktop.menu_bar.states() == ALL_RUNNING
    assert desktop.quit() == 0


def is_covered(desktop):
    """Whether a black window is above the icon."""
    return not desktop.screen.image(desktop.menu_bar.icon_window()).has(TEAL)


def test_the_icon_stays_above_other_windows(running):
    wait_until_at(running, FLOATING)
    running.screen.cover(Rect(900, 0, 124, 100), 0)
    wait_until(lambda: not is_covered(running), "the icon above the window")
    assert running.menu_bar.states() == ALL_RUNNING


@unmanaged
@pytest.mark.parametrize("news", ["_NET_ACTIVE_WINDOW", "_NET_CLIENT_LIST_STACKING"])
def test_the_icon_comes_up_when_the_window_manager_puts_another_window_above_it(running, news):
    wait_until_at(running, FLOATING)
    window = running.screen.open_window(Rect(900, 0, 124, 100))
    wait_until(lambda: is_covered(running), "a window above the icon")
    running.screen.set_root_property(news, window.id)
    running.menu_bar.icon()


@unmanaged
def test_the_icon_stays_below_a_window_that_fills_the_screen(running):
    wait_until_at(running, FLOATING)
    window = running.screen.open_window(Rect(0, 0, 1024, 768))
    running.screen.set_state(window, "_NET_WM_STATE_FULLSCREEN")
    running.screen.set_root_property("_NET_ACTIVE_WINDOW", window.id)
    running.screen.set_root_property("_NET_WORKAREA", 0, 40, 1000, 700)
    wait_until_at(running, Rect(960, 48, 32, 32))  # later than the active window
    assert is_covered(running)
    running.screen.set_state(window, "_NET_WM_STATE_MAXIMIZED_VERT", "_NET_WM_STATE_MAXIMIZED_HORZ")
    running.screen.set_root_property("_NET_ACTIVE_WINDOW", window.id)
    assert running.menu_bar.states() == ALL_RUNNING
