"""A panel for tests that takes icons by the session bus (StatusNotifierItem)."""

import threading
from collections import Counter

from bus import call, connect, own
from deadline import wait_until
from gi.repository import Gio, GLib
from menu_bar import states_of

WATCHER, WATCHER_PATH = "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher"
PANEL = "IsStatusNotifierHostRegistered"
ITEM_PATH = "/StatusNotifierItem"
ITEM, MENU = "org.kde.StatusNotifierItem", "com.canonical.dbusmenu"
PROPERTIES = "org.freedesktop.DBus.Properties"
INTERFACE = f"""<node><interface name="{WATCHER}">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierHostRegistered"/>
  <signal name="StatusNotifierHostUnregistered"/>
</interface></node>"""


NO_DATA = GLib.Variant("s", "")
WHOLE_MENU = ("GetLayout", "(iias)", 0, -1, [])  # a call: method, type and arguments


class Row:
    """A row of the exported menu; a separator has no title."""

    def __init__(self, number, properties, rows):
        self.number = number
        self.title = properties.get("label", "")
        self.icon = bytes(properties.get("icon-data", []))
        self.enabled = properties.get("enabled", True)
        self.checked = properties.get("toggle-state") == 1
        self.rows = [Row(*row) for row in rows]


def find_row(rows, *titles):
    """A row by how its title begins; with a second title, the one in that row's submenu."""
    for title in titles:
        found = next(row for row in rows if row.title.startswith(title))
        rows = found.rows
    return found


def clicked(row):
    """The call that tells the program of a click on a row."""
    return "Event", "(isvu)", row.number, "clicked", NO_DATA, 0


class Item:
    """An icon that a program shows on the bus, and its menu."""

    def __init__(self, connection, name, path):
        self._connection = connection
        self.name = name
        self._path = path

    def _call(self, path, interface, method, kind, *arguments):
        arguments = GLib.Variant(kind, arguments)
        return call(self._connection, self.name, path, interface, method, arguments)

    def get(self, name):
        """A property: "Title", "ToolTip", "IconPixmap"..."""
        return self._call(self._path, PROPERTIES, "Get", "(ss)", ITEM, name)[0]

    def click(self, method):
        """`method`: Activate (left), SecondaryActivate (middle) or ContextMenu (right)."""
        self._call(self._path, ITEM, method, "(ii)", 0, 0)

    def menu(self):
        """Opens the exported menu and reads its rows."""
        path = self.get("Menu")
        self._call(path, MENU, "AboutToShow", "(i)", 0)
        _, (_, _, rows) = self._call(path, MENU, *WHOLE_MENU)
        return [Row(*row) for row in rows]

    def numbers(self):
        """Those by which the panel names the rows of the menu and of its submenus."""
        rows = self.menu()
        return [row.number for row in [*rows, *(inner for row in rows for inner in row.rows)]]

    def choose(self, *titles):
        """Opens the menu and chooses an item, of a row's submenu if there is a second title."""
        row = find_row(self.menu(), *titles)
        self._call(self.get("Menu"), MENU, *clicked(row))

    def states(self):
        """The components' states that the menu shows."""
        return states_of(row.title for row in self.menu())


class Host:
    """Owns the name of the service that icons register at, and takes them, until `die`.

    As a program of its own it answers also while the test waits for something else. Without
    `takes_icons` it is only the service, to which `arrive` adds the panel that shows icons.
    It does not answer the calls and questions named by `silent_at` until `answer`. When it is asked
    for its panel for the second time, that is "gone" or it is "silent" if `second` says so.
    """

    def __init__(self, bus, takes_icons=True, silent_at=(), second=None):
        self._takes_icons = takes_icons
        self._items = []
        self._silent_at = silent_at
        self._answers = threading.Event()  # also what it is silent at
        self._asked = Counter()
        self._second = second
        self._connection = connect(bus.address)
        self._loop = GLib.MainLoop(GLib.MainContext())
        started = threading.Event()
        self._thread = threading.Thread(target=self._run, args=[started], daemon=True)
        self._thread.start()
        started.wait()
        own(self._connection, WATCHER)

    def _run(self, started):
        self._loop.get_context().push_thread_default()
        interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
        self._connection.register_object(WATCHER_PATH, interface, self._call, self._get, None)
        started.set()
        self._loop.run()

    def _ask_bus(self, method, arguments):
        name, path = "org.freedesktop.DBus", "/org/freedesktop/DBus"
        return call(self._connection, name, path, name, method, arguments)[0]

    def _note(self, name):
        self._asked[name] += 1
        is_second = self._asked[PANEL] == 2 and name == PANEL
        if is_second and self._second == "gone":
            self.leave()
        if name in self._silent_at or (is_second and self._second == "silent"):
            self._answers.wait()

    def _call(self, _connection, sender, _path, _interface, method, arguments, invocation):
        self._note(method)
        if method == "RegisterStatusNotifierItem":
            (service,) = arguments.unpack()
            name, path = (sender, service) if service[0] == "/" else (service, ITEM_PATH)
            self._items.append(Item(self._connection, name, path))
        invocation.return_value(None)

    def _get(self, _connection, _sender, _path, _interface, name):
        self._note(name)
        if name == PANEL:
            return GLib.Variant("b", self._takes_icons)
        if name == "ProtocolVersion":
            return GLib.Variant("i", 0)
        return GLib.Variant("as", [item.name for item in self._items])

    def _announce(self, event):
        self._connection.emit_signal(None, WATCHER_PATH, WATCHER, event, None)

    def arrive(self):
        self._takes_icons = True
        self._announce("StatusNotifierHostRegistered")

    def leave(self):
        """The panel ends; the service stays."""
        self._takes_icons = False
        self._announce("StatusNotifierHostUnregistered")

    def icons(self):
        """The icons that are there now."""
        return [
            item
            for item in self._items
            if self._ask_bus("NameHasOwner", GLib.Variant("(s)", (item.name,)))
        ]

    def icon(self):
        """Waits for the icon."""
        return wait_until(self.icons, "an icon on the bus")[0]

    def asked(self, name):
        """How often it has got a call or a question."""
        return self._asked[name]

    def wait_until_asked(self, name):
        """Waits for a call or a question."""
        wait_until(lambda: self.asked(name), name)

    def answer(self):
        """Answers what it has been silent at."""
        self._answers.set()

    def die(self):
        """Ends like a program that is killed."""
        if not self._connection.is_closed():
            self._connection.close_sync(None)
        self._answers.set()
        self._loop.quit()
        self._thread.join()
