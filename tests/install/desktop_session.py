"""A private desktop session, in which an installed launcher is used through its icon."""

import tempfile
from contextlib import contextmanager
from pathlib import Path


@contextmanager
def desktop_session(tree):
    """A screen and the menu bar on it, with a session bus and temporary folders of their own."""
    from accessible import Accessibility  # these need libraries that a Mac lacks
    from bus import Bus
    from menu_bar import MenuBar
    from screen import Screen

    with tempfile.TemporaryDirectory(prefix="td-") as temporary:
        private = dict.fromkeys(("TMPDIR", "XDG_RUNTIME_DIR"), temporary)
        bus = Bus(Path(temporary) / "session", {**tree.environment, **private})
        screen = accessibility = None
        try:
            accessibility = Accessibility(bus)
            screen = Screen({**bus.environment, **Accessibility.ENVIRONMENT})
            yield screen, MenuBar(screen, accessibility)
        finally:
            for part in (screen, accessibility):
                if part:
                    part.close()
            bus.end()


def run_behind_icon(tree, *arguments):
    """Runs the suite behind its icon, quits it in the menu, and returns the run's output."""
    with desktop_session(tree) as (screen, menu_bar):
        run = tree.start(
            *tree.ports_options, *arguments, terminal=None, environment=screen.environment
        )
        menu_bar.icon()
        tree.wait_for_starts()
        menu_bar.choose("Quit Tandrel")
        assert run.wait() == 0
        return run.output
