"""The session bus ends, is missing or does not answer: the run goes on, and so does its icon."""

import time
from pathlib import Path

import pytest
from component_events import stops
from components import COMPONENTS, STOP_ORDER
from console import READY, STOPPED
from deadline import wait_until
from dialogs import PortsDialog
from test_tray import FLOATING

# Seconds from the suite's start to the icon: 1 for the bus that does not answer, the rest for a busy
# machine. Each question to the bus would wait for 25.
LONGEST_WAIT = 5
THEMES = pytest.mark.parametrize("theme", ["", "XFCE"])  # the desktop's: none, by GTK


def check_works(desktop):
    """Checks that the icon floats and its menu quits; without a bus the menu's rows cannot be read."""
    icon = desktop.menu_bar.icon()
    before = desktop.menu_bar.windows().keys()
    desktop.screen.click(icon.x + icon.width // 2, icon.y + icon.height // 2)
    wait_until(lambda: desktop.menu_bar.windows().keys() - before, "the menu")
    # The menu has the keyboard a moment after it is seen, and keys before that are lost.
    wait_until(lambda: desktop.screen.press("ctrl+q") or desktop.run.process.poll() is not None, "Quit")
    assert desktop.run.wait() == 0
    assert desktop.run.output.endswith(STOPPED)
    assert desktop.errors() == []
    assert stops(desktop.suite) == STOP_ORDER


def close_menu(desktop):
    desktop.screen.press("Escape")
    wait_until(lambda: len(desktop.menu_bar.windows()) == 1, "the icon alone")


def test_a_menu_at_the_panels_icon_outlives_the_bus(in_panel):
    desktop, host = in_panel
    host.icon().click("Activate")
    menu = desktop.menu_bar.opened().rect
    desktop.bus.end()
    wait_until(lambda: set(desktop.menu_bar.windows().values()) == {menu, FLOATING}, "both")
    close_menu(desktop)
    check_works(desktop)


def test_an_icon_on_the_bus_floats_when_the_bus_ends(in_panel):
    desktop, host = in_panel
    host.icon().menu()
    assert desktop.menu_bar.windows() == {}
    desktop.bus.end()
    check_works(desktop)


def test_the_end_of_the_bus_leaves_a_dialog_open(in_panel):
    desktop, host = in_panel
    host.icon().choose("Settings")
    (window,) = wait_until(desktop.menu_bar.windows, "the dialog")
    desktop.bus.end()
    desktop.menu_bar.icon()
    wait_until(lambda: desktop.screen.has_focus(window), "the focus")
    desktop.screen.press("Escape")
    wait_until(lambda: window not in desktop.menu_bar.windows(), "the dialog to close")
    check_works(desktop)


def test_a_floating_icon_does_not_notice_the_end_of_the_bus(running):
    running.menu_bar.open()
    running.bus.end()
    close_menu(running)
    check_works(running)


def test_an_icon_in_the_tray_does_not_notice_the_end_of_the_bus(desktop):
    desktop.suite.record(*COMPONENTS)
    tray = desktop.tray()
    desktop.launch(*desktop.suite.ports_options)
    desktop.wait_until_docked(tray)
    desktop.bus.end()
    check_works(desktop)


@pytest.mark.parametrize("desktop", [{"has_bus": False}], indirect=True)
@pytest.mark.parametrize("address", ["", "autolaunch:"])
def test_without_a_bus_none_is_started(desktop, address):
    before = desktop.processes()
    desktop.suite.tool("dbus-launch")  # records its calls
    desktop.change({"DBUS_SESSION_BUS_ADDRESS": address})
    desktop.suite.record(*COMPONENTS)
    desktop.start()
    started = {process.name() for process in desktop.processes() if process not in before}
    assert started == {"launcher", *(f"td_{name}" for name in COMPONENTS)}
    assert desktop.suite.calls("dbus-launch") == []
    check_works(desktop)


@THEMES
@pytest.mark.parametrize("has_tray", [False, True])
def test_a_bus_that_does_not_answer_is_not_waited_for(desktop, has_tray, theme):
    desktop.suite.record(*COMPONENTS)
    desktop.change({"XDG_CURRENT_DESKTOP": theme})
    desktop.bus.suspend()
    tray = desktop.tray() if has_tray else None
    run = desktop.launch(*desktop.suite.ports_options)
    run.wait_for(READY)
    start = time.monotonic()
    desktop.wait_until_docked(tray) if tray else desktop.menu_bar.icon()
    assert time.monotonic() - start < LONGEST_WAIT
    check_works(desktop)
    desktop.bus.resume()


@THEMES
def test_a_bus_that_stops_answering_does_not_matter(desktop, theme):
    desktop.suite.record(*COMPONENTS)
    desktop.change({"XDG_CURRENT_DESKTOP": theme})
    desktop.start()
    assert ("libgtk-3" in Path(f"/proc/{desktop.run.pid}/maps").read_text()) == (theme == "XFCE")
    desktop.bus.suspend()
    PortsDialog(desktop).answer("Escape")
    check_works(desktop)
    desktop.bus.resume()
