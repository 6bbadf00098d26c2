"""How the dialogs behave on a desktop."""

import pytest
from component_events import stops
from console import STOPPED
from deadline import wait_until
from dialogs import Dialog, PortsDialog
from screen import Rect
from test_components import ALL_RUNNING
from test_tray import FLOATING

COVER, COVERED = 0x806040, (0x80, 0x60, 0x40)
WARNING = "Could not change the ports"


def open_dialog(desktop, kind):
    """Opens the ports dialog, or has it refused, which opens the warning."""
    dialog = PortsDialog(desktop)
    if kind == "ports":
        return dialog
    dialog.apply(80, desktop.suite.udp)
    return Dialog(desktop, WARNING)


def close_by_keys(dialog):
    dialog.answer("alt+F4")


def close_by_title_bar(dialog):
    dialog.close_by_title_bar()


def close_by_escape(dialog):
    dialog.answer("Escape")


CLOSINGS = [close_by_keys, close_by_title_bar, close_by_escape]
MANAGED_OR_NOT = pytest.mark.parametrize("desktop", [{}, {"managed": False}], indirect=True)


def check_nothing_changed(running, before):
    assert set(running.menu_bar.states().values()) == {"running"}
    assert running.pids() == before
    assert not running.suite.settings.exists()


@pytest.mark.parametrize("close", CLOSINGS)
def test_closing_the_ports_dialog_is_cancel(running, close):
    before = running.pids()
    dialog = PortsDialog(running)
    dialog.enter("Dashboard port", running.suite.ports.free())
    close(dialog)
    check_nothing_changed(running, before)


@pytest.mark.parametrize("close", CLOSINGS)
def test_closing_a_warning_is_ok(running, close):
    before = running.pids()
    close(open_dialog(running, "warning"))
    check_nothing_changed(running, before)


@MANAGED_OR_NOT
@pytest.mark.parametrize("key", ["Escape", "Return"])
def test_keys_work_as_soon_as_they_go_to_the_dialog(running, key):
    running.screen.cover(Rect(100, 500, 200, 150), COVER)
    for _ in range(3):
        before = running.menu_bar.windows()
        running.menu_bar.choose("Settings")
        (window,) = wait_until(
            lambda: [*filter(running.screen.has_focus, running.menu_bar.windows().keys() - before)],
            "a dialog that has the focus",
        )
        running.screen.tap(key)
        wait_until(lambda: window not in running.menu_bar.windows(), "the dialog to close")


@pytest.mark.parametrize("kind", ["ports", "warning"])
def test_a_dialog_is_one_to_the_window_manager(running, kind):
    screen, dialog = running.screen, open_dialog(running, kind)
    assert dialog.title() == "Tandrel"
    assert screen.atom("_NET_WM_WINDOW_TYPE_DIALOG") in screen.property(
        dialog.window, "_NET_WM_WINDOW_TYPE"
    )
    assert screen.atom("WM_DELETE_WINDOW") in screen.property(dialog.window, "WM_PROTOCOLS")
    assert screen.atom("_NET_WM_STATE_SKIP_TASKBAR") not in screen.property(
        dialog.window, "_NET_WM_STATE"
    )
    flags, functions = screen.property(dialog.window, "_MOTIF_WM_HINTS")[:2]
    assert flags & 1 and not functions & (1 | 8 | 16)  # all, minimise, maximise
    hints = screen.property(dialog.window, "WM_NORMAL_HINTS")
    assert list(hints[5:7]) == list(hints[7:9]) == list(dialog.rect[2:])  # the only size
    side, *_ = screen.property(dialog.window, "_NET_WM_ICON")
    pixels = screen.property(dialog.window, "_NET_WM_ICON")[2 : 2 + side * side]
    assert pixels[0] >> 24 < 64 and pixels[side * side // 2] >> 24 == 255  # a round corner
    dialog.answer("Escape")


def click_icon(desktop):
    icon = desktop.menu_bar.icon()
    desktop.screen.click(icon.x + icon.width // 2, icon.y + icon.height // 2)


@pytest.mark.parametrize("kind", ["ports", "warning"])
def test_a_click_on_the_icon_shows_a_minimised_dialog(running, kind):
    screen, dialog = running.screen, open_dialog(running, kind)
    screen.minimise(dialog.window)
    wait_until(lambda: dialog.window not in running.menu_bar.windows(), "no dialog")
    click_icon(running)
    wait_until(lambda: dialog.window in running.menu_bar.windows(), "the dialog")
    wait_until(lambda: screen.has_focus(dialog.window), "the focus")
    assert running.accessibility.menus() == []
    dialog.answer("Escape")


@MANAGED_OR_NOT
@pytest.mark.parametrize("kind", ["ports", "warning"])
def test_a_click_on_the_icon_raises_the_dialog(running, kind):
    screen, dialog = running.screen, open_dialog(running, kind)
    screen.cover(dialog.rect, COVER)
    x, y = dialog.rect.width // 2, dialog.rect.height // 2
    assert screen.image(dialog.rect).pixel(x, y) == COVERED
    click_icon(running)
    wait_until(lambda: screen.image(dialog.rect).pixel(x, y) != COVERED, "the dialog")
    wait_until(lambda: screen.has_focus(dialog.window), "the focus")
    assert running.accessibility.menus() == []
    assert running.menu_bar.windows()[dialog.window] == dialog.rect
    dialog.answer("Escape")


def test_labels_name_the_fields(running):
    dialog = PortsDialog(running)
    assert [(part.name, part.label) for part in dialog.shown.find("field")] == [
        ("Dashboard port", "Dashboard port"),
        ("Control port", "Control port"),
    ]
    assert dialog.text[:2] == [
        "Tandrel Settings",
        "Changing a port restarts the hub and reconnects the sender and receiver. Routing is kept.",
    ]
    assert dialog.shown.description == dialog.text[1]
    buttons = {part.name: "default" in part.states for part in dialog.shown.find("button")}
    assert buttons == {"Apply": True, "Cancel": False}
    dialog.answer("Escape")


def test_tab_goes_through_the_fields_and_the_buttons(running):
    dialog = PortsDialog(running)
    assert dialog.focused() is None
    for key, name in [
        ("Tab", "Dashboard port"),
        ("Tab", "Control port"),
        ("Tab", "Apply"),
        ("Tab", "Cancel"),
        ("Tab", "Dashboard port"),
        ("shift+Tab", "Cancel"),
        ("shift+Tab", "Apply"),
        ("shift+Tab", "Control port"),
    ]:
        running.screen.press(key)
        wait_until(lambda wanted=name: dialog.focused() == wanted, f"the focus in {name}")
    dialog.answer("Escape")


def test_space_presses_the_button_that_has_the_focus(running):
    before = running.pids()
    dialog = PortsDialog(running)
    dialog.enter("Dashboard port", running.suite.ports.free())
    while dialog.focused() != "Cancel":
        running.screen.press("Tab")
    dialog.answer("space")
    check_nothing_changed(running, before)


@pytest.mark.parametrize("shown", ["tray", "bus"], indirect=True)
def test_a_dialog_outlives_the_panel(shown):
    desktop, menu = shown
    menu.choose("Settings")
    dialog = Dialog(desktop, "Tandrel Settings")
    desktop.end_panels()
    wait_until(lambda: FLOATING in desktop.menu_bar.windows().values(), "the floating icon")
    assert desktop.screen.has_focus(dialog.window)
    dialog.answer("Escape")
    assert desktop.menu_bar.states() == ALL_RUNNING
    assert desktop.quit() == 0


def test_a_panels_menu_works_while_a_dialog_is_open(in_panel):
    desktop, host = in_panel
    icon = host.icon()
    icon.choose("Settings")
    dialog = Dialog(desktop, "Tandrel Settings")
    icon.choose("Hub", "Stop")
    wait_until(lambda: icon.states() == {**ALL_RUNNING, "Hub": "stopped"}, "the hub's end")
    icon.choose("Settings")
    assert [*desktop.menu_bar.windows()] == [dialog.window]
    icon.choose("Quit")
    assert desktop.run.wait() == 0
    assert desktop.run.output.endswith(STOPPED) and desktop.errors() == []
    assert stops(desktop.suite) == ["td_hub", "td_sender", "td_receiver"]
