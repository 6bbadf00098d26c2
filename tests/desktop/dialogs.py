"""The launcher's dialogs, read from pixels and answered by mouse and keyboard."""

from deadline import wait_until
from menu_bar import bounds
from screen import Rect

MARGIN = 20  # around everything in a dialog
BUTTON = (80, 26)  # width and height of a button with a short title
BUTTON_GAP = 10
FIELD_HEIGHT = 15  # of a text field's white inside, at least
PORT_DIGITS = 5  # at most
LABEL_DISTANCE = 139  # from a label's left edge to the field's white inside
FOCUS = (64, 133, 217)  # the colour of the line around what has the keyboard focus
FIELD_LINE, BUTTON_LINE = -1, 2  # from the edge of a field's inside or a button to that line
LABEL_START = 45  # of a label's width; no letter in this part goes below the line


class Dialog:
    """A dialog that has come up and can be answered; found by words that it shows."""

    def __init__(self, menu_bar, words):
        self._menu_bar = menu_bar
        self.screen = menu_bar.screen
        self.window, self.rect, self.text = wait_until(
            lambda: self._find(words), f"a dialog with the words {words!r}"
        )

    def _find(self, words):
        for window, rect in self._menu_bar.windows().items():
            if window == self.screen.active_window():
                text = self.screen.words(rect)
                if words in text:
                    return window, rect, text
        return None

    def answer(self, key):
        """Answers with a key ("Return", "Escape") and waits until the dialog has gone."""
        self.screen.press(key)
        self.wait_until_closed()

    def wait_until_closed(self):
        wait_until(lambda: self.window not in self._menu_bar.windows(), "the dialog to close")

    def title(self):
        """The window's title, as the window manager shows it."""
        return bytes(self.screen.property(self.window, "_NET_WM_NAME")).decode()

    def button(self, number):
        """The rectangle of a button; they are counted from the right."""
        right = self.rect.x + self.rect.width - MARGIN - number * (BUTTON[0] + BUTTON_GAP)
        bottom = self.rect.y + self.rect.height - MARGIN
        return Rect(right - BUTTON[0], bottom - BUTTON[1], *BUTTON)

    def close_by_title_bar(self):
        self.screen.click(self.rect.x + self.rect.width - 10, self.rect.y - 10)
        self.wait_until_closed()


class PortsDialog(Dialog):
    """The dialog of "Settings…", opened from the menu."""

    def __init__(self, menu_bar):
        menu_bar.choose("settings")
        super().__init__(menu_bar, "Tandrel Settings")
        self._fields = wait_until(self._find_fields, "the two fields")

    def _find_fields(self):
        """The rectangles of the two white fields, the dashboard port's first."""
        white = self.screen.image(self.rect).where(lambda pixel: min(pixel) == 255)
        inside = {y for y in range(self.rect.height) if sum(at == y for _, at in white) > 30}
        starts = [y for y in sorted(inside) if inside.issuperset(range(y, y + FIELD_HEIGHT))]
        tops = [y for y in starts if y - 1 not in starts]
        if len(tops) != 2:
            return None
        rows = range(tops[0], tops[0] + FIELD_HEIGHT)
        place = bounds([at for at in white if at[1] in rows], self.rect)
        return [place._replace(y=self.rect.y + y) for y in tops]

    def ink(self, field):
        """The dark pixels of a field's text."""
        return self.screen.image(self._fields[field]).where(lambda pixel: max(pixel) < 128)

    def focused(self):
        """What shows the keyboard focus by the line around it, and on how many of three sides."""
        places = {f"field {number}": (rect, FIELD_LINE) for number, rect in enumerate(self._fields)}
        places.update({f"button {at}": (self.button(at), BUTTON_LINE) for at in (0, 1)})
        image = self.screen.image(self.rect)
        sides = {name: self._focused_sides(image, *place) for name, place in places.items()}
        return {name: number for name, number in sides.items() if number}

    def _focused_sides(self, image, rect, line):
        left, top = rect.x - self.rect.x, rect.y - self.rect.y
        right, middle = left + rect.width - 1, top + rect.height // 2
        above = (left + rect.width // 2, top + line)
        sides = [(left + line, middle), (right - line, middle), above]
        return sum(image.pixel(*side) == FOCUS for side in sides)

    def ports(self):
        """The numbers that the fields show."""
        # Neither the selection's grey nor the field's edge is part of the text.
        prepare = ["-threshold", "50%", "-bordercolor", "white", "-border", "30"]
        return [int(self.screen.words(field, *prepare)) for field in self._fields]

    def label_ink(self, field):
        """The dark pixels of the start of a field's label; their rows are the field's."""
        place = self._fields[field]
        left = place.x - LABEL_DISTANCE
        word = self.screen.image(place._replace(x=left, width=LABEL_START))
        return word.where(lambda pixel: max(pixel) < 128)

    def enter(self, field, text):
        """Replaces a field's text: 0 is the dashboard port's, 1 the control port's."""
        place = self._fields[field]
        before = self.screen.image(place)
        self.screen.click(place.x + place.width - 4, place.y + place.height // 2)
        # Until the window manager has passed the click on, keys go to the other field.
        wait_until(lambda: self.screen.image(place) != before, "the insertion point")
        self.screen.press(*["BackSpace"] * PORT_DIGITS)
        wait_until(lambda: not self.ink(field), "an empty field")
        self.screen.type(str(text))
        wait_until(lambda: self.ink(field), "the typed text")

    def apply(self, http, udp):
        self.enter(0, http)
        self.enter(1, udp)
        self.answer("Return")
