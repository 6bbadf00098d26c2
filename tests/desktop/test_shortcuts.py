"""The key equivalents: those that the menu shows work."""

import re
from pathlib import Path

import pytest
from deadline import wait_until
from dialogs import Dialog

LEFT_ALT, RIGHT_ALT, O_KEY = "64", "108", "32"  # keys, whatever they are set to type


def is_opened(desktop):
    address = desktop.dashboard_address().encode()
    wait_until(lambda: desktop.suite.calls("open") == [[address]], "the dashboard to be opened")


def is_copied(desktop):
    address = desktop.dashboard_address()
    wait_until(lambda: desktop.clipboard() == address, "the address on the clipboard")


def settings_are_shown(desktop):
    Dialog(desktop.menu_bar, "Tandrel Settings").answer("Escape")


def press_in_menu(desktop, keys):
    desktop.suite.forget_calls("open")
    menu = desktop.menu_bar.open_window()
    desktop.screen.press(keys)
    wait_until(lambda: menu not in desktop.menu_bar.windows().values(), "the menu to close")


@pytest.mark.parametrize(
    ("keys", "has_effect"),
    [
        ("alt+o", is_opened),
        (f"{RIGHT_ALT}+{O_KEY}", is_opened),
        ("alt+c", is_copied),
        ("alt+comma", settings_are_shown),
    ],
)
def test_a_shortcut_chooses_its_item(running, keys, has_effect):
    press_in_menu(running, keys)
    has_effect(running)


def test_shortcuts_work_while_another_alphabet_is_typed(running):
    running.screen.run("setxkbmap", "ru,us")
    menu = running.menu_bar.open()
    assert menu.words("open").endswith("Alt+O")
    running.menu_bar.dismiss(menu)
    press_in_menu(running, f"{LEFT_ALT}+{O_KEY}")
    is_opened(running)


def test_a_shortcut_that_cannot_be_typed_is_not_shown(running):
    running.screen.run("setxkbmap", "ru")
    menu = running.menu_bar.open()
    assert menu.words("open") == "Open Dashboard"
    assert menu.words("copy") == "Copy Dashboard Address"
    running.menu_bar.dismiss(menu)


def keep_preferences_private(desktop):
    """Has GNUstep's preferences in the private home; it does not look at HOME."""
    text = Path("/etc/GNUstep/GNUstep.conf").read_text()
    setting = "GNUSTEP_USER_DEFAULTS_DIR"
    private = f"{setting}={desktop.suite.home}"
    text, count = re.subn(rf"^{setting}=.*", private, text, flags=re.MULTILINE)
    assert count == 1
    path = desktop.suite.home / "GNUstep.conf"
    path.write_text(text)
    desktop.change({"GNUSTEP_CONFIG_FILE": str(path)})
    return path


@pytest.mark.parametrize(
    ("settings", "shown", "keys"),
    [
        (
            {"GSFirstCommandKey": "Control_L", "GSFirstControlKey": "Alt_L"},
            "C[a-z]+\\+O",  # a reader of pixels takes "Ctrl" for "Ctri"
            "ctrl+o",
        ),
        (
            {"GSFirstCommandKey": "NoSymbol", "GSSecondCommandKey": "Super_L"},
            "Super\\+O",
            "super+o",
        ),
    ],
)
def test_the_shortcuts_are_with_the_users_own_command_key(desktop, settings, shown, keys):
    configuration = keep_preferences_private(desktop)
    for name, key in settings.items():
        write = ["defaults", "write", "NSGlobalDomain", name, key]
        desktop.screen.run("env", f"GNUSTEP_CONFIG_FILE={configuration}", *write)
    desktop.start()
    menu = desktop.menu_bar.open()
    assert re.fullmatch(f"Open Dashboard {shown}", menu.words("open"))
    desktop.menu_bar.dismiss(menu)
    press_in_menu(desktop, keys)
    is_opened(desktop)
    assert desktop.quit() == 0
