"""The icon on a desktop without a tray: always visible, and never in the way of the desktop's bars."""

import pytest
from components import COMPONENTS
from deadline import wait_until
from desktop import Desktop
from screen import ANY_SIZE, Rect
from test_tray import FLOATING, wait_until_at

unmanaged = pytest.mark.parametrize("desktop", [False], indirect=True)


@pytest.fixture
def resizable():
    """A launcher on a screen that can change its size."""
    made = Desktop(managed=False, server=ANY_SIZE)
    made.suite.record(*COMPONENTS)
    made.start()
    yield made
    assert made.quit() == 0
    left = made.close()
    assert not left, f"left running: {left}"


@unmanaged
@pytest.mark.parametrize("is_composed", [False, True])
def test_the_icon_has_round_corners(desktop, is_composed):
    desktop.screen.paint(0x806040)
    if is_composed:
        desktop.screen.own("_NET_WM_CM_S0")
    desktop.start()
    wait_until_at(desktop, FLOATING)
    corners = [(x, y) for x in (0, 21) for y in (0, 21)]
    if is_composed:  # by another program: the window itself is clear there
        (icon,) = desktop.menu_bar.windows()
        pixels = desktop.screen.pixels(icon, 22)
        assert {pixels[y][x] for x, y in corners} == {(0, 0, 0, 0)}
        assert pixels[1][11] == (33, 33, 33, 255)
    else:
        image = desktop.screen.image(FLOATING)
        assert {image.pixel(*corner) for corner in corners} == {(0x80, 0x60, 0x40)}
        assert image.pixel(11, 1) == (33, 33, 33)
    assert desktop.quit() == 0


def test_the_icon_is_not_managed(running):
    wait_until_at(running, FLOATING)
    (icon,) = running.menu_bar.windows()
    assert not running.screen.is_managed(icon)


@unmanaged
def test_the_icon_is_in_the_work_area_and_follows_it(running):
    wait_until_at(running, FLOATING)
    running.screen.set_root_property("_NET_WORKAREA", 0, 40, 1000, 700)
    wait_until_at(running, Rect(970, 48, 22, 22))
    running.screen.set_root_property("_NET_WORKAREA", 0, 40, 1000, 700, 0, 0, 900, 768)
    running.screen.set_root_property("_NET_CURRENT_DESKTOP", 1)
    wait_until_at(running, Rect(870, 8, 22, 22))
    assert set(running.menu_bar.states().values()) == {"green"}


@unmanaged
def test_a_desktop_without_an_area_of_its_own_has_the_first_ones(running):
    running.screen.set_root_property("_NET_CURRENT_DESKTOP", 3)
    running.screen.set_root_property("_NET_WORKAREA", 0, 40, 1000, 700)
    wait_until_at(running, Rect(970, 48, 22, 22))


@unmanaged
def test_the_icon_is_all_on_the_screen_where_the_work_area_is_smaller(running):
    running.screen.set_root_property("_NET_WORKAREA", 0, 40, 10, 10)
    wait_until_at(running, Rect(0, 40, 22, 22))


@unmanaged
def test_the_icon_follows_the_work_area_while_the_menu_is_open(running):
    menu = running.menu_bar.open()
    running.screen.set_root_property("_NET_WORKAREA", 0, 40, 1000, 700)
    wait_until(
        lambda: running.menu_bar.icon_window() == Rect(970, 48, 22, 22), "the icon in the area"
    )
    running.menu_bar.dismiss(menu)


@unmanaged
@pytest.mark.parametrize("area", [(0, 0, 0, 0), (5000, 5000, 100, 100), (1, 2)])
def test_a_work_area_off_the_screen_is_none(running, area):
    running.screen.set_root_property("_NET_WORKAREA", 0, 40, 1000, 700)
    wait_until_at(running, Rect(970, 48, 22, 22))
    running.screen.set_root_property("_NET_WORKAREA", *area)
    wait_until_at(running, FLOATING)


@unmanaged
def test_the_icon_keeps_clear_of_a_bar_that_the_window_manager_does_not_tell_of(desktop):
    desktop.screen.set_root_property("_NET_SUPPORTING_WM_CHECK", 1)
    desktop.start()
    wait_until_at(desktop, Rect(994, 56, 22, 22))
    assert desktop.quit() == 0


def test_the_icon_stays_on_a_screen_that_changes_its_size(resizable):
    wait_until_at(resizable, FLOATING)
    resizable.screen.resize(800, 600)
    wait_until_at(resizable, Rect(770, 8, 22, 22))
    resizable.screen.resize(1280, 1024)
    wait_until_at(resizable, Rect(1250, 8, 22, 22))
    assert set(resizable.menu_bar.states().values()) == {"green"}


@unmanaged
def test_the_icon_is_twice_as_large_on_a_dense_display(desktop):
    desktop.screen.set_resource("Xft.dpi", 192)
    desktop.suite.record(*COMPONENTS)
    desktop.start()
    wait_until_at(desktop, Rect(972, 8, 44, 44))
    bars = desktop.menu_bar.icon()
    assert bars.width == 36 and 26 <= bars.height <= 28  # the ends are smoothed
    assert desktop.quit() == 0


@unmanaged
def test_the_icons_size_follows_the_density_in_half_steps(running):
    sides = [("144", 33), ("110", 22), ("118", 22), ("122", 33), ("1000", 88), ("no number", 22)]
    for density, side in sides:
        running.screen.set_resource("Xft.dpi", density)
        wait_until_at(running, Rect(1016 - side, 8, side, side))
    running.menu_bar.icon()


def test_the_icon_stays_above_other_windows(running):
    wait_until_at(running, FLOATING)
    window = running.screen.open_window(Rect(900, 0, 124, 100))
    wait_until(lambda: running.screen.active_window() == window.id, "the window's focus")
    running.menu_bar.icon()
    assert set(running.menu_bar.states().values()) == {"green"}


@unmanaged
@pytest.mark.parametrize("news", ["_NET_ACTIVE_WINDOW", "_NET_CLIENT_LIST_STACKING"])
def test_the_icon_comes_up_when_the_window_manager_puts_another_window_above_it(running, news):
    wait_until_at(running, FLOATING)
    window = running.screen.open_window(Rect(900, 0, 124, 100))
    assert not running.screen.image(FLOATING).where(lambda pixel: pixel != (0, 0, 0))
    running.screen.set_root_property(news, window.id)
    running.menu_bar.icon()


@unmanaged
def test_the_icon_stays_below_a_window_that_fills_the_screen(running):
    wait_until_at(running, FLOATING)
    window = running.screen.open_window(Rect(0, 0, 1024, 768))
    running.screen.set_state(window, "_NET_WM_STATE_FULLSCREEN")
    running.screen.set_root_property("_NET_ACTIVE_WINDOW", window.id)
    running.screen.set_root_property("_NET_WORKAREA", 0, 40, 1000, 700)
    moved = Rect(970, 48, 22, 22)
    wait_until_at(running, moved)  # later than the active window
    assert not running.screen.image(moved).where(lambda pixel: pixel != (0, 0, 0))
    running.screen.set_state(window, "_NET_WM_STATE_MAXIMIZED_VERT", "_NET_WM_STATE_MAXIMIZED_HORZ")
    running.screen.set_root_property("_NET_ACTIVE_WINDOW", window.id)
    assert set(running.menu_bar.states().values()) == {"green"}
