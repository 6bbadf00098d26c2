"""The launcher's icon beside a tray program that people use: both in the same tray of the tests.

The private screen has a window manager and the tray, and neither a session bus nor a desktop whose
look a toolkit would take over.
"""

import subprocess
import time

from deadline import DEADLINE, wait_until
from desktop import Desktop
from idle import observe
from screen import SIZE, Rect
from Xlib import X, display
from Xlib.ext import xtest

LAUNCHER, OTHER = "launcher in a tray", "pasystray"
BACKGROUND = 0x3B5268  # of screen and tray
LOOK = 0.0005  # seconds from one look at the screen to the next: the programs need the processors
STILL = 0.1  # seconds without a change, after which something counts as drawn
CLICKS = 4  # after each start
SETTLE = 1  # seconds from the drawn icon until its program is observed
COLUMNS = (
    "",
    {
        "memory": ("memory (PSS), KiB", 0),
        "libraries": ("libraries mapped", 0),
        "wakes": ("wake-ups a second", 1),
        "icon": ("start to icon, ms", 0),
        "first": ("first click to menu, ms", 1),
        "later": ("later clicks, ms", 1),
    },
)


def drawn(screen, rect, before):
    """Waits until a rectangle no longer shows `before` and keeps still; returns the time of the last
    change."""
    seen, since, limit = before, time.monotonic(), time.monotonic() + DEADLINE
    while seen == before or time.monotonic() < since + STILL:
        assert time.monotonic() < limit, "nothing was drawn"
        time.sleep(LOOK)
        image = screen.image(rect)
        if image != seen:
            seen, since = image, time.monotonic()
    return since


class Mouse:
    """Clicks through a connection of its own, without starting a program."""

    def __init__(self, screen):
        self._display = display.Display(screen.environment["DISPLAY"])

    def click(self, x, y):
        """Returns the time of the click."""
        xtest.fake_input(self._display, X.MotionNotify, x=x, y=y)
        self._display.sync()
        clicked = time.monotonic()
        xtest.fake_input(self._display, X.ButtonPress, 1)
        xtest.fake_input(self._display, X.ButtonRelease, 1)
        self._display.sync()
        return clicked

    def close(self):
        self._display.close()


def click(screen, mouse, place):
    """Opens the menu and closes it; returns the milliseconds until it was drawn.

    The menu is looked for above and below the middle of the icon.
    """
    x, y = place.x + place.width // 2, place.y + place.height // 2
    column = Rect(x, 0, 1, SIZE[1])
    before = screen.image(column)
    clicked = mouse.click(x, y)
    taken = (drawn(screen, column, before) - clicked) * 1000
    mouse.click(0, SIZE[1] - 1)
    wait_until(lambda: screen.image(column) == before, "the menu to close")
    return taken


def launch(desktop):
    return desktop.launch(*desktop.suite.ports_options, "--no-browser")


def launch_other(desktop):
    silent = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
    return subprocess.Popen([OTHER], env=desktop.screen.environment, **silent)


def measure_one(desktop, mouse, start, seconds):
    """One start with some clicks; returns its row."""
    screen = desktop.screen
    tray = desktop.tray(colour=BACKGROUND)
    before = screen.image(tray.place)
    began = time.monotonic()
    program = start(desktop)
    shown = (drawn(screen, tray.place, before) - began) * 1000
    time.sleep(SETTLE)
    row = observe({OTHER: [program.pid]}, seconds)[OTHER] if seconds else {}
    clicks = [click(screen, mouse, tray.place) for _ in range(CLICKS)]
    screen.disconnect(tray.icon())  # which ends either program
    program.wait()
    tray.die()
    return {**row, "icon": [shown], "first": clicks[:1], "later": clicks[1:]}


def measure(rounds, seconds):
    """Starts both programs in turns; observes each for so many seconds in the first round."""
    rows = {LAUNCHER: {}, OTHER: {}}
    desktop = Desktop(has_bus=False)
    try:
        desktop.screen.paint(BACKGROUND)
        mouse = Mouse(desktop.screen)
        for number in range(rounds):
            for name, start in (LAUNCHER, launch), (OTHER, launch_other):
                row = measure_one(desktop, mouse, start, 0 if number else seconds)
                for key, values in row.items():
                    rows[name].setdefault(key, []).extend(values)
        mouse.close()
    finally:
        left = desktop.close()
    assert not left, f"left running: {left}"
    return rows
