"""The copied address after Quit: with a clipboard manager."""

import sys
from pathlib import Path

from console import STOPPED
from deadline import wait_until


def copy_address(desktop):
    """Chooses Copy and returns the address once it is on the clipboard."""
    address = desktop.dashboard_address()
    desktop.menu_bar.choose("Copy")
    wait_until(lambda: desktop.clipboard() == address, "the address on the clipboard")
    return address


def start_clipboard_manager(desktop, *arguments):
    script = Path(__file__).with_name("clipboard_manager.py")
    desktop.screen.program(sys.executable, str(script), *arguments)
    wait_until(lambda: desktop.screen.owner("CLIPBOARD_MANAGER"), "the clipboard manager")


def test_the_clipboard_manager_keeps_the_address_after_quit(running):
    start_clipboard_manager(running)
    address = copy_address(running)
    assert running.quit() == 0
    assert running.run.output.endswith(STOPPED)
    wait_until(lambda: running.clipboard() == address, "the address from the clipboard manager")


def test_what_another_program_has_copied_since_stays(running):
    start_clipboard_manager(running)
    copy_address(running)
    running.screen.copy("other words")
    wait_until(lambda: running.clipboard() == "other words", "the other program's text")
    assert running.quit() == 0
    assert running.clipboard() == "other words"


def test_a_clipboard_manager_that_does_not_answer_delays_quit_only_a_little(running):
    start_clipboard_manager(running, "silent")
    copy_address(running)
    running.menu_bar.choose("Quit")
    assert running.run.wait(deadline=15) == 0
    assert running.run.output.endswith(STOPPED)
