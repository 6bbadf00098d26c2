"""The launcher's icon, its menu and its dialogs, as a user sees and works them."""

from deadline import wait_until
from screen import Image, Rect

PROGRAM = "launcher"  # the instance name of its windows
TEAL = (77, 201, 191)  # the icon's bars
EDGE = (158, 158, 158)  # of a menu; drawn last
DOTS = {"green": (0, 255, 0), "orange": (255, 128, 0), "red": (255, 0, 0)}

TEXT, LINE = 23, 9  # the heights of an item's row and of a separator
TOP = 4  # above the first row
DOT_COLUMN, MARK_COLUMN = (24, 16), (6, 14)  # left edge and width
COMPONENTS = ("hub", "receiver", "sender")
ROWS = (
    ["header", "address", None, "open", "copy", None, *COMPONENTS, None, "all", None, None]
    + ["settings", "at launch", None, None, "quit"]
)
COMPONENT_ROWS = ("start", "stop", "restart")


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

    def _centre(self, row):
        return self.rect.x + self.rect.width // 2, self.rect.y + self._rows[row] + TEXT // 2

    def point_at(self, row):
        self.screen.move(*self._centre(row))

    def click(self, row):
        self.screen.click(*self._centre(row))


class MenuBar:
    """What a running launcher shows on a screen."""

    def __init__(self, screen):
        self.screen = screen
        self._known = {}  # windows that were there before the one that is waited for

    def icon(self):
        """Waits for the icon; returns the rectangle of its bars."""

        def drawn():
            windows = self.screen.windows(PROGRAM).values()
            for rect in windows:
                found = self.screen.image(rect).where(lambda pixel: _close(pixel, TEAL, 4))
                if len(found) >= 60:
                    return _bounds(found, rect)
            return None

        return wait_until(drawn, "the icon")

    def _new_window(self, shown, what):
        def new():
            for window, rect in self.screen.windows(PROGRAM).items():
                if window not in self._known and shown(window, rect):
                    self._known[window] = rect
                    return rect
            return None

        return wait_until(new, what)

    def _edged(self, _, rect):
        right, bottom = rect.width - 1, rect.height - 1
        image = self.screen.image(rect)
        return all(_close(image.pixel(x, y), EDGE, 3) for x in (0, right) for y in (0, bottom))

    def open(self):
        """Clicks the icon and returns the menu, drawn."""
        icon = self.icon()
        self._known = self.screen.windows(PROGRAM)
        self.screen.click(icon.x + icon.width // 2, icon.y + icon.height // 2)
        return Menu(self.screen, self._new_window(self._edged, "the menu"), ROWS)

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
            return menu.rect not in self.screen.windows(PROGRAM).values()

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

    def wait_for_dialog(self):
        """Waits until a dialog has come up, is active and drawn; returns its rectangle."""

        def shown(window, rect):
            text = self.screen.image(rect).where(lambda pixel: max(pixel) < 60)
            return self.screen.active_window() == window and len(text) > 500

        icon = self.icon()
        self._known = {
            window: rect
            for window, rect in self.screen.windows(PROGRAM).items()
            if rect.x <= icon.x < rect.x + rect.width and rect.y <= icon.y < rect.y + rect.height
        }
        rect = self._new_window(shown, "a dialog")
        wait_until(lambda: self.screen.image(rect) == self.screen.image(rect), "a drawn dialog")
        return rect

    def wait_for_no_dialog(self):
        wait_until(lambda: len(self.screen.windows(PROGRAM)) == 1, "the dialog to close")


class PortsDialog:
    """The dialog of "Settings…", opened."""

    def __init__(self, menu_bar):
        self.menu_bar = menu_bar
        self.screen = menu_bar.screen
        menu_bar.choose("settings")
        self.rect = menu_bar.wait_for_dialog()
        self._fields = wait_until(self._find_fields, "the two fields")

    def _find_fields(self):
        """The rectangles of the two white fields, the dashboard port's first."""
        white = _pixels(self.screen.image(self.rect), (255, 255, 255), 0)
        rows = sorted({y for x, y in white})
        starts = [y for y in rows if y - 1 not in rows]
        if len(starts) != 2:
            return None
        left, right = min(x for x, _ in white), max(x for x, _ in white)
        return [Rect(self.rect.x + left, self.rect.y + y, right - left, 18) for y in starts]

    def enter(self, field, text):
        """Replaces a field's text: 0 is the dashboard port's, 1 the control port's."""
        place = self._fields[field]
        before = self.screen.image(place)
        self.screen.click(place.x + 20, place.y + place.height // 2, times=3)
        wait_until(lambda: self.screen.image(place) != before, "the field's selection")
        selected = self.screen.image(place)
        self.screen.type(str(text))
        wait_until(lambda: self.screen.image(place) != selected, "the typed text")

    def fill(self, http, udp):
        self.enter(0, http)
        self.enter(1, udp)

    def press(self, key):
        self.screen.press(key)


def _pixels(image: Image, colour, by=24):
    return image.where(lambda pixel: _close(pixel, colour, by))


def _bounds(places, within):
    left, top = min(x for x, _ in places), min(y for _, y in places)
    width = max(x for x, _ in places) - left + 1
    return Rect(within.x + left, within.y + top, width, max(y for _, y in places) - top + 1)
