"""A desktop with Wayland alone: the interface is shown there too, and ends with its compositor."""

from signal import SIGKILL, SIGTERM

import pytest
from component_events import stops
from components import STOP_ORDER
from console import STOPPED
from deadline import wait_until
from test_components import ALL_RUNNING
from test_display_loss import GONE, check_ended


def windows(desktop):
    return [window.name for window in desktop.accessibility.windows()]


def start(desktop, compositor, has_x=False):
    """Starts the launcher; if it `has_x`, with an X server beside the compositor, as with Xwayland."""
    x = desktop.screen.environment if has_x else {}
    environment = {**x, **compositor.environment}
    desktop.launch(*desktop.suite.ports_options, environment=environment)


def check_ended_like_quit(desktop):
    check_ended(desktop.run, desktop.suite)
    assert desktop.run.errors.count(GONE) == 1
    assert stops(desktop.suite) == STOP_ORDER


ENDS = pytest.mark.parametrize("number", [SIGTERM, SIGKILL])


@ENDS
def test_the_end_of_the_compositor_ends_the_run_like_quit(desktop, compositor, number):
    start(desktop, compositor)
    wait_until(lambda: windows(desktop) == ["Tandrel"], "the icon")
    compositor.end(number)
    check_ended_like_quit(desktop)


@ENDS
@pytest.mark.parametrize("use", ["icon", "dialog"])
def test_the_end_of_the_compositor_ends_the_run_with_an_icon_on_the_bus(
    desktop, compositor, number, use
):
    host = desktop.host()
    start(desktop, compositor)
    icon = host.icon()
    if use == "dialog":
        icon.choose("Settings")
        wait_until(lambda: windows(desktop) == ["Tandrel Settings"], "the dialog")
    compositor.end(number)
    check_ended_like_quit(desktop)


@ENDS
def test_an_operation_returns_before_the_end_of_the_compositor_ends_the_run(
    slow_sender, desktop, compositor, number
):
    host = desktop.host()
    start(desktop, compositor)
    host.icon().choose("All", "Restart")
    slow_sender.wait_until_asked()
    compositor.end(number)
    check_ended(desktop.run, desktop.suite)
    assert desktop.run.errors.count(GONE) == 1
    slow_sender.check_stopped(restarted=True)


@ENDS
def test_the_end_of_the_compositor_does_not_disturb_quit(slow_sender, desktop, compositor, number):
    host = desktop.host()
    start(desktop, compositor)
    host.icon().choose("Quit")
    slow_sender.wait_until_asked()
    compositor.end(number)
    check_ended(desktop.run, desktop.suite)
    slow_sender.check_stopped()


def test_a_dialog_and_quit_of_an_icon_on_the_bus(desktop, compositor):
    host = desktop.host()
    start(desktop, compositor)
    icon = host.icon()
    icon.choose("Settings")
    (dialog,) = wait_until(desktop.accessibility.windows, "the dialog")
    dialog.one("button", "Cancel").act()
    wait_until(lambda: not desktop.accessibility.windows(), "the dialog to close")
    icon.choose("Quit")
    assert desktop.run.wait() == 0
    assert desktop.run.output.endswith(STOPPED) and desktop.errors() == []


@pytest.mark.parametrize("has_x", [False, True])
def test_a_left_click_in_the_panel_opens_the_dashboard(desktop, compositor, has_x):
    host = desktop.host()
    start(desktop, compositor, has_x)
    icon = host.icon()
    desktop.suite.forget_calls("open")
    icon.click("Activate")
    address = desktop.dashboard_address().encode()
    wait_until(lambda: desktop.suite.calls("open") == [[address]], "the dashboard")
    assert windows(desktop) == desktop.accessibility.menus() == []
    icon.choose("Quit")
    assert desktop.run.wait() == 0


def test_a_click_in_a_tray_beside_the_compositor_opens_the_menu(desktop, compositor):
    tray = desktop.tray()
    start(desktop, compositor, has_x=True)
    desktop.wait_until_docked(tray)
    assert desktop.menu_bar.states() == ALL_RUNNING
    assert desktop.quit() == 0
