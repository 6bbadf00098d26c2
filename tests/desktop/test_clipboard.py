"""The copied address: where GNUstep finds no folder for it, and after Quit."""

import sys
from pathlib import Path

import pytest
from components import COMPONENTS
from console import STOPPED
from deadline import wait_until
from preload import Gate

NOWHERE = "/nonexistent/folder"


def copy_address(desktop):
    """Chooses Copy and returns the address once it is on the clipboard."""
    address = desktop.dashboard_address()
    desktop.menu_bar.choose("copy")
    wait_until(lambda: desktop.clipboard() == address, "the address on the clipboard")
    return address


def start_clipboard_manager(desktop, *arguments):
    script = Path(__file__).with_name("clipboard_manager.py")
    desktop.screen.program(sys.executable, str(script), *arguments)
    wait_until(lambda: desktop.screen.owner("CLIPBOARD_MANAGER"), "the clipboard manager")


def test_without_a_folder_for_temporary_files_the_icon_works_at_once(desktop):
    desktop.suite.record(*COMPONENTS)
    desktop.change(dict.fromkeys(("TEMP", "TMP", "TMPDIR"), NOWHERE))
    desktop.start()
    assert set(desktop.menu_bar.states().values()) == {"green"}
    assert len(desktop.menu_bar.windows()) == 1  # no dialog beside the icon
    assert b"emporary" not in desktop.run.errors
    assert desktop.quit() == 0


@pytest.mark.parametrize("missing", [("TEMP",), ("TEMP", "TMP")])
def test_the_address_is_copied_by_the_next_folder_that_exists(desktop, missing):
    desktop.suite.record(*COMPONENTS)
    desktop.change(dict.fromkeys(missing, NOWHERE))
    desktop.start()
    copy_address(desktop)
    assert desktop.quit() == 0


def test_a_request_while_the_clipboard_is_taken_over_is_answered(desktop):
    gate = Gate(desktop.suite.folder)
    desktop.suite.record(*COMPONENTS)
    desktop.change(gate.environment("XSetSelectionOwner", call=2))  # the first is by clearContents
    desktop.start()
    desktop.menu_bar.choose("copy")
    gate.wait_for_call()
    desktop.screen.request_text("CLIPBOARD")
    gate.open()
    wait_until(desktop.screen.has_answer, "the answer")
    assert desktop.quit() == 0


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
    running.menu_bar.choose("quit")
    assert running.run.wait(deadline=15) == 0
    assert running.run.output.endswith(STOPPED)
