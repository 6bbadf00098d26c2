"""The time from a click on the icon to the menu."""

import select
from types import SimpleNamespace

from deadline import DEADLINE
from desktop import Desktop
from menu_bar import EDGE, LARGEST_ICON, PROGRAM
from place import now, put_components
from screen import Rect
from Xlib import X, display
from Xlib.ext import xtest


class Watch:
    """A connection to the screen that clicks and is told of new windows."""

    def __init__(self, screen):
        self._screen = screen
        self._display = display.Display(screen.environment["DISPLAY"])
        root = self._display.screen().root
        root.change_attributes(event_mask=X.SubstructureNotifyMask)
        self._display.sync()

    def click(self, x, y):
        """Returns the moment of the click."""
        xtest.fake_input(self._display, X.MotionNotify, x=x, y=y)
        self._display.sync()
        clicked = now()
        xtest.fake_input(self._display, X.ButtonPress, 1)
        xtest.fake_input(self._display, X.ButtonRelease, 1)
        self._display.flush()
        return clicked

    def shown_menu(self):
        """Waits until the menu is shown; returns the moment and the menu's rectangle."""
        while True:
            event = self._next()
            moment = now()
            if event.type == X.MapNotify:
                name = event.window.get_wm_class()
                size = event.window.get_geometry()
                if name and name[0] == PROGRAM and size.width > LARGEST_ICON:
                    return moment, Rect(size.x, size.y, size.width, size.height)

    def _next(self):
        if not self._display.pending_events():
            ready, _, _ = select.select([self._display], [], [], DEADLINE)
            assert ready, "no window was shown"
        return self._display.next_event()

    def drawn(self, rect):
        """Waits until the menu's edge is drawn, which is drawn last; returns the moment."""
        limit = now() + DEADLINE * 1e9
        row = Rect(rect.x, rect.y, rect.width, 1)
        while now() < limit:
            image = self._screen.image(row)
            if image.pixel(0, 0) == image.pixel(rect.width - 1, 0) == EDGE:
                return now()
        raise AssertionError("the menu was not drawn")

    def close(self):
        self._display.close()


def measure(rounds):
    row = {"shown": [], "drawn": []}
    desktop = Desktop()
    try:
        put_components(desktop.suite)
        desktop.start("--no-browser")
        icon = desktop.menu_bar.icon()
        watch = Watch(desktop.screen)
        for _ in range(rounds):
            clicked = watch.click(icon.x + icon.width // 2, icon.y + icon.height // 2)
            shown, rect = watch.shown_menu()
            row["shown"].append((shown - clicked) / 1e6)
            row["drawn"].append((watch.drawn(rect) - clicked) / 1e6)
            desktop.menu_bar.dismiss(SimpleNamespace(rect=rect))
        watch.close()
        desktop.quit()
    finally:
        desktop.close()
    return {"a click on the icon": row}
