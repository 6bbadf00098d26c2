"""Ends that nobody asked for, and a window manager that hangs."""

from pathlib import Path

import pytest
from component_events import stops
from components import COMPONENTS, STOP_ORDER
from deadline import wait_until
from desktop import check_stopped_once
from dialogs import Dialog, PortsDialog
from preload import Gate, preloaded

THREAD_STATUS, HANDLER_STATUS = 5, 6  # of preload.c


def check_everything_stopped(desktop):
    check_stopped_once(desktop.run, desktop.suite)
    assert stops(desktop.suite) == STOP_ORDER


def open_one(desktop, use):
    if use == "menu":
        desktop.menu_bar.open()
    elif use == "dialog":
        PortsDialog(desktop)


@pytest.fixture
def recorded(desktop):
    desktop.suite.record(*COMPONENTS)
    return desktop


@pytest.mark.parametrize("use", ["icon", "menu", "dialog"])
def test_an_exit_in_another_thread_stops_everything(recorded, use):
    desktop, gate = recorded, Gate(recorded.suite.folder)
    desktop.change(gate.environment("TD_EXIT"))
    desktop.start()
    gate.wait_for_call()
    open_one(desktop, use)
    gate.open()
    assert desktop.run.wait() == THREAD_STATUS
    check_everything_stopped(desktop)


@pytest.mark.parametrize(("first", "status"), [("display", 0), ("thread", THREAD_STATUS)])
def test_the_first_of_two_ends_gives_the_status(slow_sender, recorded, first, status):
    desktop, gate = recorded, Gate(recorded.suite.folder)
    desktop.change(gate.environment("TD_EXIT"))
    desktop.start()
    gate.wait_for_call()
    ends = [desktop.screen.end, gate.open]
    if first == "thread":
        ends.reverse()
    ends[0]()
    slow_sender.wait_until_asked()
    ends[1]()
    assert desktop.run.wait() == status
    check_stopped_once(desktop.run, desktop.suite)
    slow_sender.check_stopped()


def test_an_exit_handler_of_a_plug_in_does_not_come_first(recorded):
    desktop = recorded
    desktop.change(preloaded(desktop.suite.folder, TD_HANDLER="1"))
    desktop.start()
    desktop.screen.end()
    assert desktop.run.wait() == HANDLER_STATUS
    check_everything_stopped(desktop)


@pytest.mark.parametrize("use", ["icon", "menu", "dialog"])
def test_a_desktops_theme_does_not_end_the_run_otherwise(recorded, use):
    desktop = recorded
    desktop.change({"XDG_CURRENT_DESKTOP": "XFCE"})
    desktop.start()
    assert "libgtk-3" in Path(f"/proc/{desktop.run.pid}/maps").read_text()
    open_one(desktop, use)
    desktop.screen.end()
    assert desktop.run.wait() == 0
    check_everything_stopped(desktop)


def test_a_window_manager_that_hangs_keeps_nobody_from_the_menu(running):
    running.screen.suspend_manager()
    running.menu_bar.choose("Hub", "Stop")
    wait_until(lambda: not running.suite.processes("hub"), "the hub's end")
    assert running.menu_bar.states()["Hub"] == "stopped"
    running.screen.resume_manager()


def test_a_dialog_waits_for_a_window_manager_that_hangs(running):
    running.screen.suspend_manager()
    running.menu_bar.choose("Settings")
    running.screen.resume_manager()
    Dialog(running, "Tandrel Settings").answer("Escape")


def test_a_dialog_can_be_used_while_the_window_manager_hangs(running):
    http, udp = running.suite.ports.free(), running.suite.ports.free()
    dialog = PortsDialog(running)
    running.screen.suspend_manager()  # clicks work without it
    for port in (http, udp):
        running.screen.press("Tab")
        running.screen.type(str(port))
    dialog.answer("Return")
    wait_until(lambda: running.saved_settings().get("http_port") == http, "the settings file")
    running.screen.resume_manager()
