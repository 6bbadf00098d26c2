"""A private screen and what a user of it sees of an installed launcher."""

import tempfile
from contextlib import contextmanager
from pathlib import Path

import psutil


@contextmanager
def desktop_session(tree):
    """A screen and the menu bar on it, for programs of the tree's user.

    What the desktop's programs leave in the folder for temporary files is private too, under a name
    that is short enough for a socket.
    """
    from menu_bar import MenuBar  # these take an X server's library, which a Mac has not
    from screen import Screen

    with tempfile.TemporaryDirectory(prefix="td-") as temporary:
        private = dict.fromkeys(("TEMP", "TMP", "TMPDIR"), temporary)
        screen = Screen({**tree.environment, **private})
        try:
            yield screen, MenuBar(screen)
        finally:
            screen.close()
            # A pasteboard server ends by itself when its screen has gone.
            psutil.wait_procs(_programs_of(tree), timeout=10)


def _programs_of(tree):
    found = []
    for process in psutil.process_iter():
        try:
            if process.environ().get("HOME") == str(tree.home):
                found.append(process)
        except (psutil.NoSuchProcess, psutil.AccessDenied):
            continue
    return found


def run_behind_icon(tree, *arguments):
    """Runs the suite behind its icon until its menu's Quit; returns the run's output."""
    with desktop_session(tree) as (screen, menu_bar):
        run = tree.start(
            *tree.ports_options, *arguments, terminal=None, environment=screen.environment
        )
        menu_bar.icon()
        tree.wait_for_starts()
        menu_bar.choose("quit")
        assert run.wait() == 0
        return run.output
