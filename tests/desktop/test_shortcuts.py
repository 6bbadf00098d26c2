"""The shortcuts that the menu shows choose their items while it is open."""

import pytest
from deadline import wait_until
from test_components import ALL_RUNNING

LEFT_CONTROL, O_KEY = "37", "32"  # keys, whatever they are set to type


def is_opened(desktop):
    call = [desktop.dashboard_address().encode()]
    wait_until(lambda: desktop.suite.calls("open") == [call], "the dashboard to be opened")


def is_copied(desktop):
    address = desktop.dashboard_address()
    wait_until(lambda: desktop.clipboard() == address, "the address on the clipboard")


def settings_are_shown(desktop):
    settings = wait_until(desktop.screen.active_window, "the settings")
    assert settings in desktop.menu_bar.windows()
    desktop.screen.press("Escape")
    wait_until(lambda: settings not in desktop.menu_bar.windows(), "the end of the settings")


def has_ended(desktop):
    assert desktop.run.wait() == 0


@pytest.fixture
def quiet(desktop):
    """A launcher that opens no dashboard at launch, its icon shown."""
    desktop.start("--no-browser")
    yield desktop
    if desktop.run.process.poll() is None:
        assert desktop.quit() == 0


@pytest.mark.parametrize(
    ("keys", "has_effect"),
    [
        ("ctrl+o", is_opened),
        ("ctrl+c", is_copied),
        ("ctrl+comma", settings_are_shown),
        ("ctrl+q", has_ended),
    ],
)
def test_a_shortcut_chooses_its_item_and_closes_the_menu(quiet, keys, has_effect):
    quiet.menu_bar.open()
    quiet.screen.press(keys)
    quiet.menu_bar.wait_until_closed()
    has_effect(quiet)


def test_a_shortcut_works_while_a_submenu_is_open(quiet):
    menu = quiet.menu_bar.open()
    menu.point_at("Hub")
    menu.submenu("Hub")
    quiet.screen.press("ctrl+o")
    quiet.menu_bar.wait_until_closed()
    is_opened(quiet)


def test_shortcuts_work_while_another_alphabet_is_typed(quiet):
    quiet.screen.run("setxkbmap", "ru,us")
    quiet.menu_bar.open()
    quiet.screen.press(f"{LEFT_CONTROL}+{O_KEY}")
    quiet.menu_bar.wait_until_closed()
    is_opened(quiet)


def test_without_its_modifier_or_with_another_one_it_chooses_nothing(quiet):
    quiet.menu_bar.open()
    quiet.screen.press("q", "alt+q", "ctrl+shift+q", "Escape")
    quiet.menu_bar.wait_until_closed()
    assert quiet.menu_bar.states() == ALL_RUNNING
