"""The launcher's dialogs, read from pixels and answered by mouse and keyboard."""

from deadline import wait_until
from menu_bar import bounds

FIELD_HEIGHT = 15  # of a text field's white inside, at least
PORT_DIGITS = 5  # at most


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
        wait_until(lambda: self.window not in self._menu_bar.windows(), "the dialog to close")


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

    def _ink(self, field):
        return self.screen.image(self._fields[field]).where(lambda pixel: max(pixel) < 128)

    def enter(self, field, text):
        """Replaces a field's text: 0 is the dashboard port's, 1 the control port's."""
        place = self._fields[field]
        self.screen.click(place.x + place.width - 4, place.y + place.height // 2)
        self.screen.press(*["BackSpace"] * PORT_DIGITS)
        wait_until(lambda: not self._ink(field), "an empty field")
        self.screen.type(str(text))
        wait_until(lambda: self._ink(field), "the typed text")

    def apply(self, http, udp):
        self.enter(0, http)
        self.enter(1, udp)
        self.answer("Return")
