"""The launcher's icon and menu on the screen, operated by mouse and read as screen readers do."""

import re

from deadline import wait_until

PROGRAM = "tandrel"  # the instance name of its windows
TEAL = (77, 201, 191)  # the icon's bars
LARGEST_ICON = 64
ROW = re.compile("(.*)   (running|stopped)")


def states_of(titles):
    """What the menu says of each component: {"Hub": "running", ...}."""
    return dict(found.groups() for found in map(ROW.fullmatch, titles) if found)


class Menu:
    """An open menu or submenu: `rows` by their titles; a row is named by how its title begins."""

    def __init__(self, screen, shown):
        self._screen = screen
        self._shown = shown
        self.rect = shown.rect
        self.rows = {row.name: row for row in shown.children if row.name}

    def row(self, title):
        """What screen readers are told of a row."""
        return next(row for name, row in self.rows.items() if name.startswith(title))

    def point_at(self, title):
        self._screen.move(*self.row(title).middle)

    def click(self, title):
        self._screen.click(*self.row(title).middle)

    def is_open(self):
        return "showing" in self._shown.states

    def focused(self):
        """The title of the row that the keyboard is at; None for none."""
        return next((name for name, row in self.rows.items() if "focused" in row.states), None)

    def submenu(self, title):
        """Waits for the submenu of a row, and returns it."""
        (submenu,) = self.row(title).children
        wait_until(lambda: "showing" in submenu.states, f"the submenu of {title}")
        return Menu(self._screen, submenu)


class MenuBar:
    """What a running launcher shows on a screen."""

    def __init__(self, screen, accessibility):
        self.screen = screen
        self._accessibility = accessibility

    def windows(self):
        """The launcher's visible windows: {id: rectangle}."""
        return self.screen.windows(PROGRAM)

    def windows_but(self, rect):
        """The rectangles of the windows other than this one."""
        return [shown for shown in self.windows().values() if shown != rect]

    def icon_window(self):
        """The rectangle of the icon's window, small and about square; None while there is none."""
        for rect in self.windows().values():
            if rect.width <= LARGEST_ICON and abs(rect.width - rect.height) <= 4:
                return rect
        return None

    def icon(self):
        """Waits until the icon is drawn; returns the rectangle of its window."""
        return wait_until(self.drawn_icon, "the icon")

    def drawn_icon(self):
        """The rectangle of the icon's window; None while it is not there or not drawn."""
        rect = self.icon_window()
        return rect if rect and self.screen.image(rect).has(TEAL) else None

    def menu(self):
        """The open menu; None when none is."""
        shown = self._accessibility.menus()
        return Menu(self.screen, shown[0]) if shown else None

    def wait_until_heard(self):
        """Waits until the launcher tells screen readers of the menus that open."""
        wait_until(lambda: [each.name for each in self._accessibility.programs()], "the launcher")

    def opened(self):
        """Waits for the menu."""
        return wait_until(self.menu, "the menu")

    def open(self, button=1):
        """Clicks the icon and returns the menu."""
        icon = self.icon()
        self.wait_until_heard()
        self.screen.click(icon.x + icon.width // 2, icon.y + icon.height // 2, button=button)
        return self.opened()

    def choose(self, title, sub_title=None):
        """Opens the menu and chooses an item, of a row's submenu if `sub_title` is given."""
        menu = self.open()
        menu.click(title)
        if sub_title:
            menu.submenu(title).click(sub_title)

    def wait_until_closed(self):
        """Waits until no menu is open."""
        wait_until(lambda: not self._accessibility.menus(), "the menu to close")

    def dismiss(self):
        """Closes the menu without a choice, by a click elsewhere."""
        self.screen.click(20, 300)
        self.wait_until_closed()

    def states(self):
        """Opens the menu, reads the components' states and dismisses it."""
        states = states_of(self.open().rows)
        self.dismiss()
        return states
