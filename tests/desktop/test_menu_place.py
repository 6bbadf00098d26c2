"""Where the menu and its submenus are shown."""

import pytest
from monitors import lies_in, start_with_icon_at
from screen import Rect

LEFT, RIGHT = Rect(0, 0, 512, 768), Rect(512, 0, 512, 768)
UPPER, LOWER = Rect(0, 0, 1024, 400), Rect(0, 400, 1024, 368)
REST, TIGHT = Rect(0, 0, 1024, 438), Rect(0, 438, 1024, 330)  # TIGHT: the menu and little more


def test_the_menu_is_left_alone_by_the_window_manager(running):
    menu = running.menu_bar.open()
    running.menu_bar.submenu(menu, "hub")
    windows = running.menu_bar.windows()
    shown = [window for window, rect in windows.items() if rect.width > 30]
    assert len(shown) == 2
    assert not any(running.screen.is_managed(window) for window in shown)
    running.menu_bar.dismiss(menu)


@pytest.mark.parametrize("primary", [0, 1])
@pytest.mark.parametrize(("x", "monitor"), [(460, LEFT), (530, RIGHT)])
def test_the_menu_is_on_the_icons_monitor(desktop, x, monitor, primary):
    start_with_icon_at(desktop, x, "top", [LEFT, RIGHT], primary)
    menu = desktop.menu_bar.open()
    assert lies_in(menu.rect, monitor)
    submenu = desktop.menu_bar.submenu(menu, "hub")
    assert lies_in(submenu.rect, monitor)
    if monitor == LEFT:
        assert submenu.rect.x < menu.rect.x
    desktop.menu_bar.dismiss(menu)
    assert desktop.quit() == 0


@pytest.mark.parametrize(("edge", "monitor"), [("top", UPPER), ("bottom", LOWER)])
def test_the_menu_is_between_the_icon_and_the_other_end_of_its_monitor(desktop, edge, monitor):
    icon = start_with_icon_at(desktop, 200, edge, [UPPER, LOWER])
    menu = desktop.menu_bar.open()
    assert lies_in(menu.rect, monitor)
    if edge == "top":
        assert menu.rect.y >= icon.y + icon.height
    else:
        assert menu.rect.y + menu.rect.height <= icon.y
    desktop.menu_bar.dismiss(menu)
    assert desktop.quit() == 0


@pytest.mark.parametrize(
    ("y", "edge"), [(10, "upper"), (740, "lower")], ids=["bar-at-the-top", "bar-at-the-bottom"]
)
def test_the_menu_of_a_copy_of_the_icon_is_beside_the_bar(running, y, edge):
    running.screen.set_root_property("_NET_WORKAREA", 0, 40, 1024, 680)
    menu = running.menu_bar.open_from_copy(400, y)
    assert menu.rect.x == 400
    if edge == "upper":
        assert menu.rect.y in (40, 41)
    else:
        assert menu.rect.y + menu.rect.height in (720, 721)
    running.menu_bar.dismiss(menu)


def test_the_menu_is_on_the_monitor_nearest_to_an_icon_that_is_on_none(desktop):
    near = Rect(600, 0, 424, 768)
    start_with_icon_at(desktop, 560, "top", [Rect(0, 0, 300, 768), near])
    menu = desktop.menu_bar.open()
    assert lies_in(menu.rect, near)
    desktop.menu_bar.dismiss(menu)
    assert desktop.quit() == 0


@pytest.mark.parametrize(("primary", "height"), [(0, 300), (1, 200)])
def test_the_menu_fits_on_the_primary_monitor_of_those_that_show_the_same(
    desktop, primary, height
):
    mirrored = [Rect(0, 0, 1024, 300), Rect(0, 0, 1024, 200)]
    start_with_icon_at(desktop, 200, "top", [*mirrored, Rect(0, 300, 1024, 468)], primary)
    assert desktop.menu_bar.open_window().height == height  # lower than the menu
    desktop.screen.press("alt+q")
    assert desktop.run.wait() == 0


def test_a_click_on_an_icon_that_the_menu_covers_chooses_nothing(desktop):
    icon = start_with_icon_at(desktop, 200, "bottom", [REST, TIGHT])
    menu = desktop.menu_bar.open(desktop.screen.press_button)
    assert lies_in(menu.rect, TIGHT)
    x, y = icon.x + icon.width // 2, icon.y + icon.height // 2
    assert menu.row_at(y) == "quit"
    desktop.screen.release_button(x, y)
    desktop.screen.press("Escape")
    desktop.menu_bar.wait_until_closed(menu)
    assert desktop.quit() == 0
