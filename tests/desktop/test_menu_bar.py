"""The icon, the states in the menu, and Quit."""

import pytest
from components import COMPONENTS, STOP_ORDER
from console import LEFT_STOPPED, STOPPED
from deadline import wait_until
from preload import Gate
from screen import Rect

ALL_UP = {"header": "green", "hub": "green", "receiver": "green", "sender": "green"}


def test_the_menu_shows_every_component_running(running):
    assert running.menu_bar.states() == ALL_UP


@pytest.mark.parametrize("desktop", [False], indirect=True)
def test_the_menu_opens_without_a_window_manager(running):
    assert running.menu_bar.states() == ALL_UP


def test_a_pair_of_separators_is_one_wider_gap_with_its_line_in_the_middle(running):
    menu = running.menu_bar.open()
    assert menu.lines_above("open", separators=1) == [4]
    assert menu.lines_above("settings", separators=2) == [9]
    assert menu.lines_above("quit", separators=2) == [9]
    running.menu_bar.dismiss(menu)


@pytest.mark.parametrize("desktop", [False], indirect=True)
def test_the_right_button_opens_the_menu_and_the_wheel_does_not(running):
    screen, icon = running.screen, running.menu_bar.icon()
    for button in (2, 4, 5):
        screen.click(icon.x, icon.y, button=button)
    for width in (900, 1000):  # the icon follows; when it does so again, a menu would be there
        screen.set_root_property("_NET_WORKAREA", 0, 0, width, 768)
        place = Rect(width - 30, 8, 22, 22)
        wait_until(lambda: place in running.menu_bar.windows().values(), "the icon to follow")
    assert list(running.menu_bar.windows().values()) == [place]
    menu = running.menu_bar.open(lambda x, y: screen.click(x, y, button=3))
    running.menu_bar.dismiss(menu)


@pytest.mark.parametrize("button", [1, 3])
def test_an_item_is_chosen_by_press_drag_and_release(running, button):
    menu = running.menu_bar.open(lambda x, y: running.screen.press_button(x, y, button))
    submenu = running.menu_bar.submenu(menu, "hub")
    running.screen.release_button(*submenu.middle("stop"), button)
    running.menu_bar.wait_until_closed(menu)
    assert running.menu_bar.states() == {**ALL_UP, "header": "orange", "hub": "red"}


def test_a_click_on_the_icon_or_on_a_disabled_item_leaves_the_menu_open(running):
    menu = running.menu_bar.open(running.screen.press_button)
    icon = running.menu_bar.icon()
    running.screen.release_button(icon.x + icon.width // 2, icon.y + icon.height // 2)
    menu.click("header")
    menu.click("address")
    running.menu_bar.submenu(menu, "hub")
    running.menu_bar.dismiss(menu)


def test_a_release_outside_the_menu_closes_it(running):
    menu = running.menu_bar.open()
    running.screen.press_button(*menu.middle("quit"))
    running.screen.release_button(100, 600)
    running.menu_bar.wait_until_closed(menu)
    assert running.menu_bar.states() == ALL_UP


def test_keys_choose_nothing_that_the_pointer_has_left(running):
    menu = running.menu_bar.open()
    menu.point_at("quit")
    running.screen.move(100, 600)
    running.screen.press("Return", "Escape")
    running.menu_bar.wait_until_closed(menu)
    assert running.menu_bar.states() == ALL_UP


def test_a_submenu_closes_when_the_pointer_goes_on(running):
    menu = running.menu_bar.open()
    submenu = running.menu_bar.submenu(menu, "hub")
    running.screen.move(submenu.rect.x + 9, submenu.rect.y + 9)
    menu.point_at("hub")
    assert len(running.menu_bar.windows()) == 3  # with the icon
    menu.point_at("settings")
    running.menu_bar.wait_until_closed(submenu)
    running.menu_bar.dismiss(menu)


def test_the_menu_shows_which_component_has_stopped(running):
    running.menu_bar.choose("receiver", "stop")
    assert running.menu_bar.states() == {**ALL_UP, "header": "orange", "receiver": "red"}


def test_a_component_that_keeps_exiting_shows_as_stopped(desktop):
    desktop.suite.set_behaviour("sender", "exit-at-once")
    desktop.start()
    desktop.run.wait_for(LEFT_STOPPED.format("sender"), "errors")
    assert desktop.menu_bar.states() == {**ALL_UP, "header": "orange", "sender": "red"}
    assert desktop.quit() == 0


def test_quit_stops_everything_in_order(running):
    assert running.quit() == 0
    stops = [event["program"] for event in running.suite.events("stop")]
    assert stops == STOP_ORDER
    assert running.run.output.count(b"Tandrel: stopping...") == 1
    assert running.run.output.endswith(STOPPED)
    assert not running.suite.processes()


def test_escape_closes_the_submenu_and_then_the_menu(running):
    menu = running.menu_bar.open()
    submenu = running.menu_bar.submenu(menu, "hub")
    running.screen.press("Escape")
    running.menu_bar.wait_until_closed(submenu)
    assert menu.rect in running.menu_bar.windows().values()
    running.screen.press("Escape")
    running.menu_bar.wait_until_closed(menu)
    assert running.menu_bar.states() == ALL_UP


def test_a_key_equivalent_chooses_its_item(running):
    running.menu_bar.open()
    running.screen.press("alt+q")
    assert running.run.wait() == 0
    assert not running.suite.processes()


def test_a_key_equivalent_without_its_modifier_chooses_nothing(running):
    menu = running.menu_bar.open()
    running.screen.press("q", "Escape")
    running.menu_bar.wait_until_closed(menu)
    assert running.menu_bar.states() == ALL_UP


def test_a_menu_that_can_be_seen_has_the_keyboard(desktop):
    gate = Gate(desktop.suite.folder)
    desktop.suite.record(*COMPONENTS)
    desktop.change(gate.environment("XGrabKeyboard"))
    desktop.start()
    icon = desktop.menu_bar.icon_window()
    desktop.screen.click(icon.x + icon.width // 2, icon.y + icon.height // 2)
    gate.wait_for_call()
    (menu,) = (rect for rect in desktop.menu_bar.windows().values() if rect != icon)
    assert desktop.screen.words(menu) == ""
    gate.open()
    wait_until(lambda: "Quit" in desktop.screen.words(menu), "the menu")
    desktop.screen.press("alt+q")
    assert desktop.run.wait() == 0


def test_a_menu_has_the_pointer_when_another_program_lets_go_of_it(running):
    icon = running.menu_bar.icon()
    assert running.screen.grab_pointer()
    menu = running.menu_bar.open_from_copy(icon.x, icon.y)
    running.screen.release_pointer()
    wait_until(running.screen.is_pointer_grabbed, "the grab")
    running.menu_bar.dismiss(menu)


def test_the_menu_is_operated_by_keyboard(running):
    menu = running.menu_bar.open()
    running.screen.press("Down", "Down", "Down", "Right")  # open, copy, hub and into its submenu
    wait_until(lambda: len(running.menu_bar.windows()) == 3, "the submenu")
    running.screen.press("Left")
    wait_until(lambda: len(running.menu_bar.windows()) == 2, "the end of the submenu")
    running.screen.press("Return")  # opens it too
    wait_until(lambda: len(running.menu_bar.windows()) == 3, "the submenu")
    running.screen.press("Down", "Return")
    running.menu_bar.wait_until_closed(menu)
    assert running.menu_bar.states() == {**ALL_UP, "header": "orange", "hub": "red"}
