"""What programs show, asked as screen readers do (AT-SPI), on a bus of the tests' own."""

from contextlib import suppress

from bus import call, connect, dispatch
from gi.repository import Gio, GLib
from screen import Rect

REGISTRY = "org.a11y.atspi.Registry"
ROOT = "/org/a11y/atspi/accessible/root"
EVENT = "org.a11y.atspi.Event"
ACCESSIBLE, ACTION = "org.a11y.atspi.Accessible", "org.a11y.atspi.Action"
EDITABLE = "org.a11y.atspi.EditableText"
COMPONENT, TEXT = "org.a11y.atspi.Component", "org.a11y.atspi.Text"
# The numbers that AT-SPI gives to roles, whose names change from one toolkit's version to another.
ROLES = {
    16: "dialog", 29: "label", 35: "menu item", 41: "menu", 43: "button", 50: "separator",
    61: "field", 79: "field",
}  # fmt: skip
# And those of states; a program answers with the bits.
STATES = {
    1: "active", 4: "checked", 7: "editable", 8: "enabled", 11: "focusable", 12: "focused",
    25: "showing", 39: "default", 41: "checkable",
}  # fmt: skip
LABELLED_BY = 2  # a relation
SCREEN = 0  # whose coordinates places are in


class Accessible:
    """Something on the screen: a window, a menu, a button. Each question goes to the program."""

    def __init__(self, bus, owner, path):
        self._bus, self._owner, self._path = bus, owner, path

    def _call(self, interface, method, arguments=None):
        return self._bus.call(self._owner, self._path, interface, method, arguments)

    def _get(self, interface, name):
        arguments = GLib.Variant("(ss)", (interface, name))
        return self._call("org.freedesktop.DBus.Properties", "Get", arguments)

    def __eq__(self, other):
        return (self._owner, self._path) == (other._owner, other._path)

    def __hash__(self):
        return hash((self._owner, self._path))

    @property
    def name(self):
        return self._get(ACCESSIBLE, "Name")

    @property
    def description(self):
        return self._get(ACCESSIBLE, "Description")

    @property
    def role(self):
        """One of ROLES; None for another."""
        return ROLES.get(self._call(ACCESSIBLE, "GetRole"))

    @property
    def states(self):
        """Those of STATES that it is in."""
        low, high = self._call(ACCESSIBLE, "GetState")
        return {name for bit, name in STATES.items() if (high << 32 | low) >> bit & 1}

    def is_showing(self):
        """False also when it no longer exists."""
        try:
            return "showing" in self.states
        except GLib.Error:
            return False

    @property
    def children(self):
        found = self._call(ACCESSIBLE, "GetChildren")
        return [Accessible(self._bus, *reference) for reference in found]

    @property
    def label(self):
        """The text of what names it; None when nothing does."""
        for kind, targets in self._call(ACCESSIBLE, "GetRelationSet"):
            if kind == LABELLED_BY:
                return Accessible(self._bus, *targets[0]).name
        return None

    @property
    def text(self):
        """What stands in a field."""
        return self._call(TEXT, "GetText", GLib.Variant("(ii)", (0, -1)))

    @property
    def rect(self):
        """Its place on the screen."""
        return Rect(*self._call(COMPONENT, "GetExtents", GLib.Variant("(u)", (SCREEN,))))

    @property
    def middle(self):
        x, y, width, height = self.rect
        return x + width // 2, y + height // 2

    def replace_text(self, text):
        """What a screen reader types into a field."""
        self._call(EDITABLE, "SetTextContents", GLib.Variant("(s)", (text,)))

    def act(self):
        """What a screen reader has it do: a button is pressed, an item chosen."""
        self._call(ACTION, "DoAction", GLib.Variant("(i)", (0,)))

    def walk(self):
        """It and everything in it, in the program's order."""
        yield self
        for child in self.children:
            yield from child.walk()

    def find(self, role=None, name=None):
        """What in it has that role and name, if they are given."""
        return [
            part
            for part in self.walk()
            if (role is None or part.role == role) and (name is None or part.name == name)
        ]

    def one(self, role=None, name=None):
        """The only part that `find` finds."""
        (found,) = self.find(role, name)
        return found


class Accessibility:
    """The programs on the accessibility bus of a session bus, which starts it.

    Programs take part that are started with `ENVIRONMENT`, after this was made.
    """

    ENVIRONMENT = {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}

    def __init__(self, bus):
        session = connect(bus.address)
        (address,) = call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")
        session.close_sync(None)
        self._connection = connect(address)
        self._shown = set()  # a menu is in no window: it is known by the event when it is shown
        self._focused = []
        self._subscribe("showing", self._note_shown)
        self._subscribe("focused", self._note_focused)

    def _subscribe(self, state, note):
        """Calls `note` with what has changed that state, and whether it is now in it."""
        self._connection.signal_subscribe(
            None, f"{EVENT}.Object", "StateChanged", None, state, Gio.DBusSignalFlags.NONE,
            lambda _, owner, path, *event: note(Accessible(self, owner, path), event[2][1]),
        )  # fmt: skip
        wanted = GLib.Variant("(sass)", (f"object:state-changed:{state}", [], ""))
        self.call(REGISTRY, "/org/a11y/atspi/registry", REGISTRY, "RegisterEvent", wanted)

    def _note_shown(self, part, _):
        self._shown.add(part)

    def _note_focused(self, part, is_focused):
        with suppress(GLib.Error):  # what has gone since then
            if is_focused and (part.role, part.name) not in self._focused[-1:]:
                self._focused.append((part.role, part.name))

    def call(self, *question):
        """Calls a method of a program's; returns its result: the only one, or all."""
        values = call(self._connection, *question)
        return values[0] if len(values) == 1 else values

    def programs(self):
        """The programs that answer, and whose events are told from now on."""
        return [part for part in Accessible(self, REGISTRY, ROOT).children if part.is_showing()]

    def windows(self):
        """The visible windows, menus excepted."""
        windows = [window for program in self.programs() for window in program.children]
        return [window for window in windows if window.is_showing()]

    def focused(self):
        """Role and name of all that was told to have got the focus, in order."""
        dispatch()
        return self._focused

    def menus(self):
        """The open menus and submenus."""
        dispatch()
        return [part for part in self._shown if part.is_showing() and part.role == "menu"]

    def close(self):
        if not self._connection.is_closed():  # by the end of the bus
            self._connection.close_sync(None)
