"""The icon and its menu: the time from the launcher's start, and from a click, until they are drawn.

The private screen has a window manager and nothing else. There is no panel, so that the icon floats, no
session bus, and no desktop of which the toolkit would take the look.
"""

import os
import select
import shutil
from contextlib import contextmanager
from types import SimpleNamespace

from deadline import DEADLINE
from place import BUILD, STARTS, now, place, private_folder
from screen import SIZE, Rect, Screen
from sections import ICON, MENU
from Xlib import X, display
from Xlib.ext import xtest

SMALLEST_ICON, LARGEST_ICON = 16, 64
BACKGROUND = (59, 82, 104)  # of the screen
STILL = 100  # ms without a change, after which a window counts as drawn


class Watch:
    """A connection to the screen that clicks and is told of new windows."""

    def __init__(self, screen):
        self._screen = screen
        self._display = display.Display(screen.environment["DISPLAY"])
        root = self._display.screen().root
        root.change_attributes(event_mask=X.SubstructureNotifyMask)
        self._display.sync()

    def click(self, x, y):
        """Returns the moment."""
        xtest.fake_input(self._display, X.MotionNotify, x=x, y=y)
        self._display.sync()
        clicked = now()
        xtest.fake_input(self._display, X.ButtonPress, 1)
        xtest.fake_input(self._display, X.ButtonRelease, 1)
        self._display.flush()
        return clicked

    def shown(self, largest):
        """Waits until a window is shown that is no smaller than an icon and no larger than that;
        returns the moment, the window and its rectangle."""
        while True:
            event = self._next()
            moment = now()
            if event.type == X.MapNotify:
                size = event.window.get_geometry()
                if SMALLEST_ICON <= size.width <= largest:
                    return moment, event.window, Rect(size.x, size.y, size.width, size.height)

    def wait_until_hidden(self, window):
        while True:
            event = self._next()
            if event.type == X.UnmapNotify and event.window == window:
                return

    def _next(self):
        if not self._display.pending_events():
            ready, _, _ = select.select([self._display], [], [], DEADLINE)
            assert ready, "nothing more happened to a window"
        return self._display.next_event()

    def drawn(self, rect):
        """Waits until the left part of a window is drawn and no longer changes; returns the moment of
        the last change. The rest is drawn at the same time.
        """
        part = Rect(rect.x, rect.y, min(rect.width, SMALLEST_ICON), rect.height)
        empty = bytes(BACKGROUND) * (part.width * part.height)
        seen, since, limit = empty, now(), now() + DEADLINE * 1e9
        while seen == empty or now() < since + STILL * 1e6:
            assert now() < limit, "a window was not drawn"
            image = self._screen.image(part).rgb()
            if image != seen:
                seen, since = image, now()
        return since

    def disconnect(self, window):
        """Closes the connection of the program that has the window."""
        window.kill_client()
        self._display.sync()

    def close(self):
        self._display.close()


@contextmanager
def bare_screen():
    with private_folder() as folder:
        variables = ("HOME", "TMPDIR", "XDG_RUNTIME_DIR")
        screen = Screen({"PATH": os.environ["PATH"], **dict.fromkeys(variables, str(folder))})
        try:
            screen.paint(int.from_bytes(bytes(BACKGROUND), "big"))
            yield screen
        finally:
            screen.close()


@contextmanager
def behind_icon(screen, build=BUILD):
    """The launcher of a build folder behind its icon: `run`, `watch`, the icon's `window` and `rect`,
    and `taken`, the milliseconds from its execution."""
    with place() as here:
        for name in ("launcher", "tdgui.so"):
            shutil.copy2(build / name, here.suite.folder)
        watch = Watch(screen)
        environment = {**screen.environment, **here.tells()}
        run = here.launch(terminal=None, environment=environment)
        shown, window, rect = watch.shown(LARGEST_ICON)
        drawn = watch.drawn(rect)
        began = next(each.at for each in here.moments.until(*STARTS) if each.event == "exec")
        taken = {"shown": (shown - began) / 1e6, "drawn": (drawn - began) / 1e6}
        yield SimpleNamespace(run=run, watch=watch, window=window, rect=rect, taken=taken)
        watch.disconnect(window)  # which ends the run
        watch.close()
        assert run.wait() == 0


def click(icon):
    """Opens and closes the menu; returns the milliseconds."""
    x, y, width, height = icon.rect
    clicked = icon.watch.click(x + width // 2, y + height // 2)
    shown, window, rect = icon.watch.shown(SIZE[0])
    drawn = icon.watch.drawn(rect)
    icon.watch.click(0, SIZE[1] - 1)  # elsewhere
    icon.watch.wait_until_hidden(window)
    return {"shown": (shown - clicked) / 1e6, "drawn": (drawn - clicked) / 1e6}


def measure(starts, menus):
    rows = {row: {"shown": [], "drawn": []} for row in (ICON, MENU)}

    def note(row, taken):
        for column, value in taken.items():
            rows[row][column].append(value)

    with bare_screen() as screen:
        for _ in range(starts):
            with behind_icon(screen) as icon:
                note(ICON, icon.taken)
        with behind_icon(screen) as icon:
            for _ in range(menus):
                note(MENU, click(icon))
    return rows
