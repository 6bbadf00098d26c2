"""The display ends, drops the launcher or does not answer."""

from signal import SIGCONT, SIGKILL, SIGTERM

import pytest
import system
from component_events import start_recording, stops
from components import STOP_ORDER
from console import STOPPED, UNAVAILABLE
from deadline import wait_until
from desktop import check_stopped_once
from dialogs import Dialog, PortsDialog
from preload import preloaded
from test_clipboard import copy_address, start_clipboard_manager

GONE = b"Tandrel: the display is gone: quitting.\n"


def end_server(desktop):
    desktop.screen.end(SIGTERM)


def kill_server(desktop):
    desktop.screen.end(SIGKILL)


def close_connection(desktop):
    desktop.screen.disconnect(desktop.screen.named("Qt Selection Owner for Tandrel"))


LOSSES = pytest.mark.parametrize("lose", [end_server, kill_server, close_connection])


def check_ended(run, suite):
    assert run.wait() == 0
    check_stopped_once(run, suite)


def check_ended_like_quit(run, suite):
    check_ended(run, suite)
    assert run.errors.endswith(GONE) and run.errors.count(GONE) == 1


@LOSSES
def test_the_loss_of_the_display_ends_the_run_like_quit(shown, lose):
    desktop, menu = shown
    menu.states()  # waits for it
    lose(desktop)
    check_ended_like_quit(desktop.run, desktop.suite)
    assert stops(desktop.suite) == STOP_ORDER


def open_menu(desktop):
    desktop.menu_bar.open()


def open_submenu(desktop):
    desktop.menu_bar.open().point_at("Hub")
    wait_until(lambda: len(desktop.accessibility.menus()) == 2, "the submenu")


def open_dialog(desktop):
    PortsDialog(desktop)


def open_warning(desktop):
    PortsDialog(desktop).apply(80, desktop.suite.udp)
    Dialog(desktop, "Could not change the ports")


@LOSSES
@pytest.mark.parametrize("use", [open_menu, open_submenu, open_dialog, open_warning])
def test_the_loss_of_the_display_ends_the_run_whatever_is_open(running, lose, use):
    use(running)
    lose(running)
    check_ended_like_quit(running.run, running.suite)
    assert stops(running.suite)[-3:] == STOP_ORDER


@LOSSES
def test_an_operation_returns_before_the_loss_ends_the_run(slow_sender, shown, lose):
    desktop, menu = shown
    menu.choose("All", "Restart")
    slow_sender.wait_until_asked()
    lose(desktop)
    check_ended_like_quit(desktop.run, desktop.suite)
    slow_sender.check_stopped(restarted=True)


@LOSSES
def test_the_loss_of_the_display_does_not_disturb_quit(slow_sender, shown, lose):
    desktop, menu = shown
    menu.choose("Quit")
    slow_sender.wait_until_asked()
    lose(desktop)
    check_ended(desktop.run, desktop.suite)
    slow_sender.check_stopped()


@LOSSES
def test_the_loss_of_the_display_while_quit_hands_over_the_clipboard(running, lose):
    start_clipboard_manager(running, "silent")
    copy_address(running)
    running.menu_bar.choose("Quit")
    running.run.wait_for(STOPPED)
    lose(running)
    check_ended(running.run, running.suite)
    assert stops(running.suite) == STOP_ORDER


# The display is about to be opened; the application is being made; the icon is about to be shown.
@pytest.mark.parametrize("call", ["XOpenDisplay", "xcb_get_selection_owner", "xcb_map_window"])
@pytest.mark.parametrize("number", [SIGTERM, SIGKILL])
def test_the_loss_of_the_display_during_the_start(desktop, call, number):
    changes = preloaded(desktop.suite.folder, TD_PAUSE=call)
    run = start_recording(
        desktop.suite, terminal=None, environment={**desktop.screen.environment, **changes}
    )
    wait_until(lambda: system.is_suspended(run.pid), f"the call of {call}")
    desktop.screen.end(number)
    run.signal(SIGCONT)
    check_ended_like_quit(run, desktop.suite)
    assert stops(desktop.suite) == STOP_ORDER


def test_a_display_that_does_not_answer_leaves_a_run_without_interface(desktop):
    desktop.screen.suspend()
    try:
        run = start_recording(
            desktop.suite, terminal=None, environment=desktop.screen.environment
        )
        run.wait_for(UNAVAILABLE.format("the display does not answer"), "errors")
        assert run.stop(SIGTERM) == 0
    finally:
        desktop.screen.resume()
    check_stopped_once(run, desktop.suite)
    assert stops(desktop.suite) == STOP_ORDER


def test_a_display_that_hangs_for_a_while_is_used_again(running):
    running.screen.suspend()
    try:
        old = running.suite.kill("sender")
        running.suite.wait_for_restart("sender", old)  # supervision does not wait for the display
    finally:
        running.screen.resume()
    assert set(running.menu_bar.states().values()) == {"running"}
