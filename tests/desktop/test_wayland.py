"""A desktop with Wayland alone: the interface is shown there too, and ends with its compositor."""

import subprocess
from pathlib import Path
from signal import SIGKILL, SIGTERM

import pytest
from component_events import stops
from components import COMPONENTS, STOP_ORDER
from console import STOPPED
from deadline import wait_until


class Compositor:
    """Weston without hardware, on a socket in the runtime folder of the desktop."""

    def __init__(self, desktop):
        environment = {**desktop.screen.environment}
        del environment["DISPLAY"]
        self.environment = {**environment, "WAYLAND_DISPLAY": "wayland-test"}
        command = ["weston", "--backend=headless-backend.so", "--socket=wayland-test"]
        self._process = subprocess.Popen(
            [*command, "--no-config", "--idle-time=0"],
            env=environment,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        socket = Path(environment["XDG_RUNTIME_DIR"], "wayland-test")
        wait_until(socket.exists, "the compositor")

    def end(self, number=SIGKILL):
        self._process.send_signal(number)
        self._process.wait()


@pytest.fixture
def compositor(desktop):
    desktop.suite.record(*COMPONENTS)
    compositor = Compositor(desktop)
    yield compositor
    compositor.end()


def windows(desktop):
    return [window.name for window in desktop.accessibility.windows()]


def start(desktop, compositor):
    desktop.launch(*desktop.suite.ports_options, environment=compositor.environment)


def check_ended_like_quit(desktop):
    assert desktop.run.wait() == 0
    assert desktop.run.output.endswith(STOPPED) and desktop.run.output.count(STOPPED) == 1
    assert desktop.run.errors.count(b"Tandrel: the display is gone: quitting.\n") == 1
    assert stops(desktop.suite) == STOP_ORDER
    assert not desktop.suite.processes()


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


def test_a_dialog_and_quit_of_an_icon_on_the_bus(desktop, compositor):
    host = desktop.host()
    start(desktop, compositor)
    icon = host.icon()
    icon.choose("Settings")
    (dialog,) = wait_until(desktop.accessibility.windows, "the dialog")
    dialog.one("button", "Cancel").act()
    wait_until(lambda: not windows(desktop), "the dialog to close")
    icon.choose("Quit")
    assert desktop.run.wait() == 0
    assert desktop.run.output.endswith(STOPPED) and desktop.run.errors == b""


def test_a_left_click_in_the_panel_opens_the_dashboard(desktop, compositor):
    host = desktop.host()
    start(desktop, compositor)
    icon = host.icon()
    desktop.suite.forget_calls("open")
    icon.click("Activate")
    address = desktop.dashboard_address().encode()
    wait_until(lambda: desktop.suite.calls("open") == [[address]], "the dashboard")
    icon.choose("Quit")
    assert desktop.run.wait() == 0
