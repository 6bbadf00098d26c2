"""The launcher's dialogs, read as screen readers do and answered by mouse and keyboard."""

from deadline import wait_until


class Dialog:
    """A dialog that has come up and can be answered; found by its first line.

    `window` is its window's id, `shown` what it shows.
    """

    def __init__(self, desktop, name):
        self._desktop = desktop
        self.screen = desktop.screen
        self.window, self.rect, self.shown = wait_until(
            lambda: self._find(name), lambda: f"the dialog {name!r}; there are {self._windows()}"
        )

    def _find(self, name):
        places = {rect: window for window, rect in self._desktop.menu_bar.windows().items()}
        for shown in self._desktop.accessibility.windows():
            window = places.get(shown.rect)
            if shown.name == name and window and self.screen.has_focus(window):
                return window, shown.rect, shown
        return None

    def _windows(self):
        """The launcher's windows as the screen and as screen readers know them."""
        windows = self._desktop.menu_bar.windows().items()
        on_screen = [(rect, self.screen.has_focus(window)) for window, rect in windows]
        return on_screen, [(shown.name, shown.rect) for shown in self._desktop.accessibility.windows()]

    @property
    def text(self):
        """Its lines, from the first to what stands before the fields and buttons."""
        return [label.name for label in self.shown.find("label")]

    def title(self):
        """The window's title, as the window manager shows it."""
        return bytes(self.screen.property(self.window, "_NET_WM_NAME")).decode()

    def focused(self):
        """The name of the field or button that has the keyboard focus; None for none."""
        parts = [*self.shown.find("field"), *self.shown.find("button")]
        return next((part.name for part in parts if "focused" in part.states), None)

    def answer(self, key):
        """Answers with a key ("Return", "Escape") and waits until the dialog has gone."""
        self.screen.press(key)
        self.wait_until_closed()

    def click(self, button):
        """Answers with a button, by its name."""
        self.screen.click(*self.shown.one("button", button).middle)
        self.wait_until_closed()

    def close_by_title_bar(self):
        self.screen.click(self.rect.x + self.rect.width - 10, self.rect.y - 10)
        self.wait_until_closed()

    def wait_until_closed(self):
        windows = self._desktop.menu_bar.windows
        wait_until(lambda: self.window not in windows(), "the dialog to close")


class PortsDialog(Dialog):
    """The dialog of "Settings…", opened from the menu."""

    def __init__(self, desktop):
        desktop.menu_bar.choose("Settings")
        super().__init__(desktop, "Tandrel Settings")

    def field(self, label):
        """The field with that label, "Dashboard port" or "Control port"."""
        return next(part for part in self.shown.find("field") if part.label == label)

    def ports(self):
        """What the fields show."""
        return [self.field(label).text for label in ("Dashboard port", "Control port")]

    def enter(self, label, text):
        """Replaces a field's text."""
        field = self.field(label)
        self.screen.click(*field.middle)
        wait_until(lambda: "focused" in field.states, f"the focus in {label}")
        self.screen.press("ctrl+a")
        self.screen.type(str(text))
        wait_until(lambda: field.text == str(text), "the typed text")

    def apply(self, http, udp):
        self.enter("Dashboard port", http)
        self.enter("Control port", udp)
        self.answer("Return")
