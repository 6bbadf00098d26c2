"""A system tray for tests: it does what it is told to an icon that asks to be embedded."""

from deadline import wait_until
from Xlib import X, Xatom, display
from Xlib.protocol import event

SELECTION = "_NET_SYSTEM_TRAY_S0"  # of the first screen
PLACE = (300, 600)  # of its window


class Tray:
    """Owns the selection of the screen's tray from the start, until `die`.

    `colour` is its window's. With `alpha` it asks for icons that have an alpha channel; what it shows
    then is not composed, only kept. `visual` is the id of another visual that it asks for. `number`
    is the screen's, on a display with several.
    """

    def __init__(self, screen, colour=0, alpha=False, visual=None, number=0):
        self._display = display.Display(f"{screen.environment['DISPLAY']}.{number}")
        self._selection = self._atom(f"_NET_SYSTEM_TRAY_S{number}")
        self._screen = self._display.screen()
        self._window = self._screen.root.create_window(
            *PLACE, 200, 150, 0, self._screen.root_depth, background_pixel=colour,
            override_redirect=True,
        )
        self._window.map()
        self._owner = self._screen.root.create_window(0, 0, 1, 1, 0, self._screen.root_depth)
        if alpha:
            visual = self._visual_of_depth(32)
        if visual:
            self._ask_for(visual)
        self._owner.set_selection_owner(self._selection, X.CurrentTime)
        self.announce()

    def _atom(self, name):
        return self._display.intern_atom(name)

    def _visual_of_depth(self, wanted):
        depths = self._screen.allowed_depths
        return next(depth.visuals[0].visual_id for depth in depths if depth.depth == wanted)

    def _ask_for(self, visual):
        name = self._atom("_NET_SYSTEM_TRAY_VISUAL")
        self._owner.change_property(name, Xatom.VISUALID, 32, [visual])

    def announce(self, selection=None):
        """Says that it owns its selection, or another one, given by name."""
        owned = self._atom(selection) if selection else self._selection
        data = (32, [X.CurrentTime, owned, self._owner.id, 0, 0])
        root = self._screen.root
        message = event.ClientMessage(window=root, client_type=self._atom("MANAGER"), data=data)
        root.send_event(message, event_mask=X.StructureNotifyMask)
        self._display.sync()

    def asked(self):
        """Waits until an icon asks to be embedded; returns its window's id."""

        return wait_until(self.was_asked, "an icon that asks to be embedded")

    def was_asked(self):
        """The id of the window of an icon that has asked since the last call; else None."""
        while self._display.pending_events():
            found = self._display.next_event()
            if found.type == X.ClientMessage:
                return found.data[1][2]
        return None

    def embed(self, icon, size, saved=False):
        """Shows the icon, `size` pixels wide and high; `saved`: it stays when the tray dies."""
        window = self._display.create_resource_object("window", icon)
        if saved:
            window.change_save_set(X.SetModeInsert)
        window.configure(width=size, height=size)
        window.reparent(self._window, 0, 0)
        window.map()
        self._display.sync()

    def take(self, icon):
        """Only half of `embed`: the icon is in the tray, but not shown."""
        self._display.create_resource_object("window", icon).reparent(self._window, 0, 0)
        self._display.sync()

    def show(self, icon):
        """The other half, without a size."""
        self._display.create_resource_object("window", icon).map()
        self._display.sync()

    def let_go(self, icon):
        """Gives the icon back, and stays."""
        self._display.create_resource_object("window", icon).reparent(self._screen.root, 0, 0)
        self._display.sync()

    def resign(self):
        """Is no tray any more, and keeps the icons that it has."""
        self._owner.destroy()
        self._display.sync()

    def die(self):
        """Ends like a program that is killed: the X server destroys its windows."""
        self._display.close()
