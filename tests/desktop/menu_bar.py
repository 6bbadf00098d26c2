"""The launcher's icon and its menu, read from pixels and operated by mouse."""

from components import COMPONENTS
from deadline import wait_until
from screen import Rect

PROGRAM = "launcher"  # the instance name of its windows
TEAL = (77, 201, 191)  # the icon's bars
LARGEST_ICON = 64
EDGE = (158, 158, 158)  # of a menu; drawn last
DOTS = {"green": (40, 205, 65), "orange": (255, 149, 0), "red": (255, 59, 48)}  # as on a Mac

TEXT_LEFT = 20  # beyond the check marks
TEXT, LINE = 23, 9  # the heights of an item's row and of a separator
TOP = 4  # above the first row
DOT_COLUMN, MARK_COLUMN = (24, 16), (6, 14)  # left edge and width
ROWS = (
    ["header", "address", None, "open", "copy", None, *COMPONENTS, None, "all", None, None]
    + ["settings", "at launch", None, None, "quit"]
)
COMPONENT_ROWS = ("start", "stop", "restart")


def _is_icon(rect):
    return rect.width <= LARGEST_ICON and abs(rect.width - rect.height) <= 4


def _close(colour, wanted, by=24):
    return all(abs(one - other) <= by for one, other in zip(colour, wanted))


class Menu:
    """An open menu or submenu whose rows have the given names, None for a separator."""

    def __init__(self, screen, rect, rows):
        self.screen = screen
        self.rect = rect
        self._rows = {}
        y = TOP
        for name in rows:
            height = TEXT if name else LINE
            if name:
                self._rows[name] = y
            y += height
        assert rect.height == y + TOP, f"a menu of other rows than {rows}: {rect}"

    def image(self, row, column=None):
        left, width = column or (1, self.rect.width - 2)
        place = Rect(self.rect.x + left, self.rect.y + self._rows[row], width, TEXT)
        return self.screen.image(place)

    def dot(self, row):
        """The colour of a row's state dot by its name; None when there is none."""
        image = self.image(row, DOT_COLUMN)
        counts = {
            name: len(image.where(lambda pixel, wanted=colour: _close(pixel, wanted)))
            for name, colour in DOTS.items()
        }
        name = max(counts, key=counts.get)
        return name if counts[name] > 30 else None

    def checked(self, row):
        return len(self.image(row, MARK_COLUMN).where(lambda pixel: max(pixel) < 100)) > 8

    def words(self, row):
        """A row's text, read from its pixels."""
        left, width = TEXT_LEFT, self.rect.width - TEXT_LEFT - 1
        return self.screen.words(
            Rect(self.rect.x + left, self.rect.y + self._rows[row], width, TEXT)
        )

    def row_at(self, y):
        """The name of the row at a height of the screen; None when there is none."""
        tops = {name: self.rect.y + top for name, top in self._rows.items()}
        return next((name for name, top in tops.items() if top <= y < top + TEXT), None)

    def lines_above(self, row, separators):
        """How far each line in the gap of so many separators above a row is from its top."""
        height = separators * LINE
        top = self.rect.y + self._rows[row] - height
        image = self.screen.image(Rect(self.rect.x + 2, top, self.rect.width - 4, height))
        lines = [image.pixel(0, y) != image.pixel(0, 0) for y in range(height)]
        return [y for y, is_line in enumerate(lines) if is_line]

    def middle(self, row):
        """The x and y of a row's middle."""
        return self.rect.x + self.rect.width // 2, self.rect.y + self._rows[row] + TEXT // 2

    def point_at(self, row):
        self.screen.move(*self.middle(row))

    def click(self, row):
        self.screen.click(*self.middle(row))


class MenuBar:
    """What a running launcher shows on a screen."""

    def __init__(self, screen):
        self.screen = screen
        self._known = {}  # windows that were there before the one that is waited for

    def icon(self):
        """Waits for the icon; returns the rectangle of its bars."""
        return wait_until(self.drawn_icon, "the icon")

    def drawn_icon(self):
        """The rectangle of the icon's bars; None while it is not there or not drawn."""
        rect = self.icon_window()
        if not rect:
            return None
        found = self.screen.image(rect).where(lambda pixel: _close(pixel, TEAL, 4))
        return bounds(found, rect) if len(found) >= 60 else None

    def icon_window(self):
        """The rectangle of the icon's window: small and about square."""
        return next((rect for rect in self.windows().values() if _is_icon(rect)), None)

    def windows(self):
        """The launcher's visible windows, by their ids."""
        return self.screen.windows(PROGRAM)

    def _new_window(self, shown, what):
        def new():
            for window, rect in self.windows().items():
                if window not in self._known and shown(window, rect):
                    self._known[window] = rect
                    return rect
            return None

        return wait_until(new, what)

    def _edged(self, _, rect):
        # A tray may cover the menu's lower edge by a pixel.
        image = self.screen.image(rect)
        return all(_close(image.pixel(x, 0), EDGE, 3) for x in (0, rect.width - 1))

    def open_window(self, press=None):
        """Clicks the icon and returns the menu's rectangle when it is drawn.

        `press`, if given, is called with the icon's middle instead: its x and its y.
        """
        icon = self.icon()
        self._known = self.windows()
        press = press or self.screen.click
        press(icon.x + icon.width // 2, icon.y + icon.height // 2)
        return self._new_window(self._edged, "the menu")

    def open(self, press=None):
        """Clicks the icon and returns the menu, drawn; `press` as in `open_window`."""
        return Menu(self.screen, self.open_window(press), ROWS)

    def open_from_copy(self, x, y):
        """Presses a copy of the icon at that place, as a panel that shows one does."""
        self.icon()
        (icon,) = (window for window, rect in self.windows().items() if _is_icon(rect))
        return self.open(lambda *_: self.screen.send_press(icon, x, y))

    def submenu(self, menu, row):
        """Points at a row of the open menu and returns its submenu, drawn."""
        menu.point_at(row)
        rect = self._new_window(self._edged, f"the submenu of {row}")
        return Menu(self.screen, rect, COMPONENT_ROWS)

    def choose(self, row, sub_row=None):
        """Opens the menu and chooses an item, of a row's submenu if `sub_row` is given."""
        menu = self.open()
        if sub_row:
            self.submenu(menu, row).click(sub_row)
        else:
            menu.click(row)
        self.wait_until_closed(menu)

    def wait_until_closed(self, menu):
        def closed():
            return menu.rect not in self.windows().values()

        wait_until(closed, "the menu to close")

    def dismiss(self, menu):
        """Closes the menu without a choice, by a click elsewhere."""
        self.screen.click(100, 600)
        self.wait_until_closed(menu)

    def states(self):
        """Opens the menu, reads the state dots (by row) and dismisses it."""
        menu = self.open()
        dots = {row: menu.dot(row) for row in ("header", *COMPONENTS)}
        self.dismiss(menu)
        return dots


def bounds(places, within):
    """The smallest rectangle around points that are relative to a rectangle of the screen."""
    left, top = min(x for x, _ in places), min(y for _, y in places)
    width = max(x for x, _ in places) - left + 1
    return Rect(within.x + left, within.y + top, width, max(y for _, y in places) - top + 1)
