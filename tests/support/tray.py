"""A panel for tests that takes icons by X (XEmbed)."""

import os
import select
import threading

from deadline import wait_until
from Xlib import X, Xatom, display, error
from Xlib.protocol import event
from screen import Rect

PLACE = (300, 600)  # of the icon


class Tray:
    """Owns the selection of a screen's tray from the start, until `die`.

    It shows each icon that asks, `size` pixels wide and high; if `embeds` is false, only `embed` shows
    the last one. As a program of its own it does so while the test waits for something else. `colour`
    is its window's. With `alpha` it asks for icons that have an alpha channel; what it shows then is not
    composed, only kept. A `saved` icon stays when the tray dies. `number` is the screen's, on a display
    with several.
    """

    def __init__(
        self, screen, size=22, place=PLACE, embeds=True, colour=0, alpha=False, saved=False, number=0
    ):
        self.place = Rect(*place, size, size)
        self._embeds, self._saved = embeds, saved
        self._asked = []
        self._display = display.Display(f"{screen.environment['DISPLAY']}.{number}")
        self._display.set_error_handler(lambda *_: None)  # an icon may have gone
        self._screen = self._display.screen()
        root, depth = self._screen.root, self._screen.root_depth
        self._window = root.create_window(
            *place, 64, 64, 0, depth, background_pixel=colour, override_redirect=True
        )
        self._window.map()
        self._owner = root.create_window(0, 0, 1, 1, 0, depth)
        if alpha:
            depths = self._screen.allowed_depths
            (visual, *_) = next(found.visuals for found in depths if found.depth == 32)
            name = self._atom("_NET_SYSTEM_TRAY_VISUAL")
            self._owner.change_property(name, Xatom.VISUALID, 32, [visual.visual_id])
        selection = self._atom(f"_NET_SYSTEM_TRAY_S{number}")
        self._owner.set_selection_owner(selection, X.CurrentTime)
        data = (32, [X.CurrentTime, selection, self._owner.id, 0, 0])
        message = event.ClientMessage(window=root, client_type=self._atom("MANAGER"), data=data)
        root.send_event(message, event_mask=X.StructureNotifyMask)
        self._display.sync()
        self._end, self._ends = os.pipe()  # what the thread is told: to end or to embed
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()

    def _atom(self, name):
        return self._display.intern_atom(name)

    def _run(self):
        try:
            while True:
                while self._display.pending_events():
                    self._handle(self._display.next_event())
                if self._end in select.select([self._display, self._end], [], [])[0]:
                    if os.read(self._end, 1) == b"x":
                        break
                    self._embed(self._asked[-1])
            self._display.close()
        except error.ConnectionClosedError:
            pass  # the server has ended first

    def _handle(self, seen):
        if seen.type != X.ClientMessage:
            return
        if self._embeds:
            self._embed(seen.data[1][2])
        self._asked.append(seen.data[1][2])

    def _embed(self, icon):
        window = self._display.create_resource_object("window", icon)
        if self._saved:
            window.change_save_set(X.SetModeInsert)
        window.configure(width=self.place.width, height=self.place.height)
        window.reparent(self._window, 0, 0)
        window.map()
        self._display.sync()

    def asked(self):
        """The id of the window of the last icon that has asked to be shown; None for none."""
        return self._asked[-1] if self._asked else None

    def icon(self):
        """Waits for an icon that asks to be shown; returns its window's id."""
        return wait_until(self.asked, "an icon that asks to be shown")

    def embed(self):
        """Shows the icon after all."""
        os.write(self._ends, b"e")

    def die(self):
        """Ends like a program that is killed: the X server destroys its windows."""
        if self._thread.is_alive():
            os.write(self._ends, b"x")
            self._thread.join()
        if self._end is not None:
            os.close(self._end)
            os.close(self._ends)
            self._end = None
