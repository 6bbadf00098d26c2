"""Where the menu and its submenus are shown."""

import pytest
from screen import SIZE, Rect

LEFT, RIGHT = Rect(0, 0, 512, 768), Rect(512, 0, 512, 768)
UPPER, LOWER = Rect(0, 0, 1024, 400), Rect(0, 400, 1024, 368)
LOW, REST = Rect(0, 0, 1024, 150), Rect(0, 150, 1024, 618)  # lower than the menu


def lies_in(rect, outer):
    return (
        outer.x <= rect.x
        and outer.y <= rect.y
        and rect.x + rect.width <= outer.x + outer.width
        and rect.y + rect.height <= outer.y + outer.height
    )


def start_with_icon_at(desktop, place, *monitors, primary=0):
    """Starts the launcher with its icon in a tray at that place; returns its rectangle."""
    desktop.screen.split(*monitors, primary=primary)
    tray = desktop.tray(place=place)
    desktop.launch(*desktop.suite.ports_options)
    desktop.wait_until_docked(tray)
    return tray.place


def test_the_menu_is_left_alone_by_the_window_manager(running):
    menu = running.menu_bar.open()
    menu.point_at("Hub")
    menu.submenu("Hub")
    windows = running.menu_bar.windows()
    assert len(windows) == 3 and not any(map(running.screen.is_managed, windows))
    running.menu_bar.dismiss()


@pytest.mark.parametrize("primary", [0, 1])
@pytest.mark.parametrize(("x", "monitor"), [(470, LEFT), (530, RIGHT)])
def test_the_menu_and_its_submenu_are_on_the_icons_monitor(desktop, x, monitor, primary):
    start_with_icon_at(desktop, (x, 2), LEFT, RIGHT, primary=primary)
    menu = desktop.menu_bar.open()
    assert lies_in(menu.rect, monitor)
    menu.point_at("Hub")
    submenu = menu.submenu("Hub")
    assert lies_in(submenu.rect, monitor)
    desktop.menu_bar.dismiss()
    assert desktop.quit() == 0


@pytest.mark.parametrize(
    ("y", "monitor", "is_above"),
    [(2, UPPER, False), (370, UPPER, True), (402, LOWER, False), (740, LOWER, True)],
)
def test_the_menu_is_beside_the_icon_on_the_side_with_more_room(desktop, y, monitor, is_above):
    icon = start_with_icon_at(desktop, (200, y), UPPER, LOWER)
    menu = desktop.menu_bar.open()
    assert lies_in(menu.rect, monitor)
    beside = icon.y - menu.rect.height if is_above else icon.y + icon.height
    assert abs(menu.rect.y - beside) <= 1
    desktop.menu_bar.dismiss()
    assert desktop.quit() == 0


@pytest.mark.parametrize("how", ["resource", "variable"])
def test_everything_is_twice_as_large_on_a_dense_display(desktop, how):
    if how == "resource":
        desktop.screen.set_resource("Xft.dpi", 192)
    else:
        desktop.change({"QT_SCALE_FACTOR": "2"})
    desktop.start()
    icon = desktop.menu_bar.icon()
    assert icon == Rect(944, 16, 64, 64)
    desktop.screen.click(icon.x + 20, icon.y + 20)
    desktop.menu_bar.opened()
    (menu,) = desktop.menu_bar.windows_but(icon)
    assert menu.height > 450 and lies_in(menu, Rect(0, 0, *SIZE))
    assert abs(menu.y - (icon.y + icon.height)) <= 2
    desktop.screen.press("Up", "Return")
    assert desktop.run.wait() == 0


def test_all_of_a_menu_that_is_higher_than_the_monitor_can_be_reached(desktop):
    start_with_icon_at(desktop, (200, 2), LOW, REST)
    menu = desktop.menu_bar.open()
    assert lies_in(menu.rect, LOW)
    desktop.screen.press("Up", "Return")  # the last item
    assert desktop.run.wait() == 0
