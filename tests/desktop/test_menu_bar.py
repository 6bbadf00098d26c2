"""The menu on the screen: by mouse, by keyboard and by what it shows."""

import pytest
from component_events import wait_for_start
from components import COMPONENTS
from console import LEFT_STOPPED, VERSION
from deadline import wait_until
from test_components import ALL_RUNNING

UNMANAGED = {"managed": False}


@pytest.mark.parametrize("desktop", [UNMANAGED], indirect=True)
def test_the_menu_opens_without_a_window_manager(running):
    assert running.menu_bar.states() == ALL_RUNNING


def test_the_menu_tells_what_it_shows(running):
    menu = running.menu_bar.open()
    assert list(menu.rows) == [
        f"Tandrel {VERSION}",
        running.dashboard_address(),
        "Open Dashboard",
        "Copy Dashboard Address",
        *[f"{name.title()}   running" for name in COMPONENTS],
        "All Components",
        "Settings…",
        "Open Dashboard at Launch",
        "Quit Tandrel",
    ]
    disabled = [name for name, row in menu.rows.items() if "enabled" not in row.states]
    assert disabled == [f"Tandrel {VERSION}", running.dashboard_address()]
    checked = [name for name, row in menu.rows.items() if "checked" in row.states]
    assert checked == ["Open Dashboard at Launch"]
    menu.point_at("Hub")
    rows = menu.submenu("Hub").rows
    enabled = {name: "enabled" in row.states for name, row in rows.items()}
    assert enabled == {"Start": False, "Stop": True, "Restart": True}
    running.menu_bar.dismiss()


def test_each_opening_shows_the_states_anew(shown):
    desktop, menu = shown
    wait_for_start(desktop.suite, "sender")
    desktop.suite.set_behaviour("sender", "exit-at-once")
    assert menu.states() == ALL_RUNNING
    desktop.suite.kill("sender")
    desktop.run.wait_for(LEFT_STOPPED.format("sender"), "errors")
    assert menu.states() == {**ALL_RUNNING, "Sender": "stopped"}


@pytest.mark.parametrize("desktop", [UNMANAGED], indirect=True)
def test_the_right_button_opens_the_menu_and_the_middle_one_and_the_wheel_do_not(running):
    screen, icon = running.screen, running.menu_bar.icon()
    for button in (2, 4, 5):
        screen.click(icon.x + 9, icon.y + 9, button=button)
    running.menu_bar.open(button=3)  # a second click while a menu is open would close it
    running.menu_bar.dismiss()


@pytest.mark.parametrize("button", [1, 3])
def test_an_item_is_chosen_by_press_drag_and_release(running, button):
    icon = running.menu_bar.icon()
    running.screen.press_button(icon.x + 9, icon.y + 9, button)
    menu = running.menu_bar.opened()
    menu.point_at("Hub")
    running.screen.release_button(*menu.submenu("Hub").row("Stop").middle, button)
    running.menu_bar.wait_until_closed()
    assert running.menu_bar.states() == {**ALL_RUNNING, "Hub": "stopped"}


def test_a_click_on_a_disabled_item_chooses_nothing_and_a_click_elsewhere_closes_the_menu(running):
    menu = running.menu_bar.open()
    menu.click("Tandrel")
    menu.click("http")
    assert menu.is_open()
    running.menu_bar.dismiss()
    assert running.menu_bar.states() == ALL_RUNNING


def test_a_click_on_the_icon_closes_the_menu(running):
    running.menu_bar.open()
    icon = running.menu_bar.icon()
    running.screen.click(icon.x + 9, icon.y + 9)
    running.menu_bar.wait_until_closed()


def test_keys_choose_nothing_that_the_pointer_has_left(running):
    menu = running.menu_bar.open()
    menu.point_at("Quit")
    wait_until(lambda: menu.focused() == "Quit Tandrel", "the item at the pointer")
    running.screen.move(100, 600)
    wait_until(lambda: not menu.focused(), "no item")
    running.screen.press("Return", "Escape")
    running.menu_bar.wait_until_closed()
    assert running.menu_bar.states() == ALL_RUNNING


def test_the_menu_is_operated_by_keyboard(running):
    """The window that has had the keyboard gets it back."""
    desktop, menu_bar = running, running.menu_bar
    cover = desktop.screen.cover((100, 100, 300, 300), 0)
    menu = menu_bar.open()
    desktop.screen.press("Down", "Down", "Down")
    wait_until(lambda: menu.focused() == "Hub   running", "the hub's row")
    desktop.screen.press("Right")
    submenu = menu.submenu("Hub")
    desktop.screen.press("Left")
    wait_until(lambda: not submenu.is_open(), "the end of the submenu")
    desktop.screen.press("Right")
    submenu = menu.submenu("Hub")
    desktop.screen.press("Escape")
    wait_until(lambda: not submenu.is_open(), "the end of the submenu")
    assert menu.is_open()
    desktop.screen.press("Escape")
    menu_bar.wait_until_closed()
    menu_bar.open()
    desktop.screen.press("Up", "Up", "Up", "Up", "Right", "Down", "Return")
    menu_bar.wait_until_closed()
    assert set(menu_bar.states().values()) == {"stopped"}
    assert desktop.screen.has_focus(cover)


def test_a_component_that_keeps_exiting_shows_as_stopped(desktop):
    desktop.suite.set_behaviour("sender", "exit-at-once")
    desktop.start()
    desktop.run.wait_for(LEFT_STOPPED.format("sender"), "errors")
    assert desktop.menu_bar.states() == {**ALL_RUNNING, "Sender": "stopped"}
    assert desktop.quit() == 0
