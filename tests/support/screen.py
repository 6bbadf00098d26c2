"""A private screen: an X server without hardware, and a window manager."""

import os
import subprocess
import tempfile
from collections import namedtuple
from contextlib import suppress
from signal import SIGCONT, SIGSTOP, SIGTERM

from deadline import wait_until
from Xlib import XK, X, Xatom, Xutil, display, error, protocol
from Xlib.ext import xtest
from Xlib.protocol import event

Rect = namedtuple("Rect", "x y width height")
SIZE = (1024, 768)
FIXED_SIZE = ("Xvfb", "-screen", "0", f"{SIZE[0]}x{SIZE[1]}x24")
# A server whose screen can change its size. It needs a socket for viewers, though there are none.
ANY_SIZE = ("Xvnc", "-geometry", f"{SIZE[0]}x{SIZE[1]}", "-depth", "24")
ANY_SIZE += ("-SecurityTypes", "None", "-rfbport", "-1")


class Image:
    """The pixels of a rectangle of the screen; coordinates are relative to it."""

    def __init__(self, data, rect):
        self._data = data
        self.rect = rect

    def pixel(self, x, y):
        """Red, green and blue, each 0 to 255."""
        at = 4 * (y * self.rect.width + x)
        blue, green, red = self._data[at : at + 3]
        return red, green, blue

    def rgb(self):
        """All pixels, row by row, three bytes each."""
        pixels = bytearray(3 * self.rect.width * self.rect.height)
        for target, source in enumerate((2, 1, 0)):
            pixels[target::3] = self._data[source::4]
        return bytes(pixels)

    def has(self, colour):
        """Whether a pixel has that colour, red, green and blue."""
        rgb = self.rgb()
        return any(rgb[at : at + 3] == bytes(colour) for at in range(0, len(rgb), 3))

    def __eq__(self, other):
        return self.rect == other.rect and self._data == other._data


class Screen:
    """An X server on a display of its own, with openbox unless `managed` is false.

    `environment` is what the window manager starts with; `self.environment` adds the display to it.
    """

    def __init__(self, environment, managed=True, server=FIXED_SIZE):
        self._programs = []
        self._display = None
        self._managed = managed
        reading, writing = os.pipe()
        self._folder = tempfile.TemporaryDirectory(prefix="td-")
        if server[0] == "Xvnc":
            server = (*server, "-rfbunixpath", f"{self._folder.name}/socket")
        self._start(
            [*server, "-displayfd", str(writing), "-nolisten", "tcp", "-noreset"],
            environment,
            pass_fds=[writing],
        )
        os.close(writing)
        with open(reading, encoding="ascii") as answer:
            name = ":" + answer.readline().strip()
        self.environment = {**environment, "DISPLAY": name}
        # Xlib keeps the numbers of a server's events for all servers.
        protocol.display.Display.event_classes = dict(event.event_class)
        self._display = display.Display(name)
        self._root = self._display.screen().root
        if managed:
            self._manage()

    def _manage(self):
        self.program("openbox", "--sm-disable")
        self._manager = self._programs[-1]
        wait_until(lambda: self._root_property("_NET_SUPPORTING_WM_CHECK"), "the window manager")

    def _start(self, command, environment, **options):
        silent = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        self._programs.append(subprocess.Popen(command, env=environment, **silent, **options))

    def program(self, *command):
        """Starts a program that is to run until the screen closes."""
        self._start(command, self.environment)

    def _root_property(self, name):
        return next(iter(self.property(self._root.id, name)), None)

    def property(self, window, name):
        """The value of a window's property: numbers, or bytes; empty when it has none."""
        source = self._display.create_resource_object("window", window)
        value = source.get_full_property(self._display.intern_atom(name), X.AnyPropertyType)
        return value.value if value else ()

    def atom(self, name):
        return self._display.intern_atom(name)

    def split(self, *monitors, primary=0):
        """Divides the screen into monitors with these rectangles."""
        for number, (x, y, width, height) in enumerate(monitors):
            name = f"*{number}" if number == primary else str(number)
            place = f"{width}/{width // 4}x{height}/{height // 4}+{x}+{y}"
            # The one output of the screen would be a monitor of its own if none had it.
            self.run("xrandr", "--setmonitor", name, place, "none" if number else "screen")
        found = self._root.xrandr_get_monitors().monitors
        assert {(m.x, m.y, m.width_in_pixels, m.height_in_pixels) for m in found} == {*monitors}

    def is_managed(self, window):
        """Whether a window, by its id, is left to the window manager."""
        made = self._display.create_resource_object("window", window)
        return not made.get_attributes().override_redirect

    def set_root_property(self, name, *numbers):
        """Sets a property of the root window, as a window manager does."""
        self._root.change_property(
            self._display.intern_atom(name), Xatom.CARDINAL, 32, list(numbers)
        )
        self._display.sync()

    def set_resource(self, name, value):
        """Sets one of the X resources, which hold users' preferences."""
        text = f"{name}:\t{value}\n".encode()
        self._root.change_property(Xatom.RESOURCE_MANAGER, Xatom.STRING, 8, text)
        self._display.sync()

    def open_window(self, rect):
        """Shows an empty window of another program; returns it."""
        depth = self._display.screen().root_depth
        window = self._root.create_window(*rect, 0, depth, background_pixel=0)
        window.set_wm_normal_hints(flags=Xutil.USPosition)
        window.map()
        self._display.sync()
        return window

    def set_state(self, window, *states):
        """Sets the states of a window, as a window manager does."""
        atoms = [self._display.intern_atom(state) for state in states]
        name = self._display.intern_atom("_NET_WM_STATE")
        window.change_property(name, Xatom.ATOM, 32, atoms)
        self._display.sync()

    def resize(self, width, height):
        """Changes the size of a screen of ANY_SIZE, to one that its server offers."""
        info = self._root.xrandr_get_screen_info()
        offered = [(size["width_in_pixels"], size["height_in_pixels"]) for size in info.sizes]
        answer = self._root.xrandr_set_screen_config(
            offered.index((width, height)), 1, info.config_timestamp
        )
        assert answer.status == 0, answer

    def owner(self, selection):
        """The id of the window that owns a selection; 0 for none."""
        owner = self._display.get_selection_owner(self._display.intern_atom(selection))
        return owner.id if owner else 0

    def own(self, selection):
        """Owns a selection, in place of the program that it stands for, until the screen closes."""
        depth = self._display.screen().root_depth
        window = self._root.create_window(0, 0, 1, 1, 0, depth)
        window.set_selection_owner(self._display.intern_atom(selection), X.CurrentTime)
        self._display.sync()

    def active_window(self):
        return self._root_property("_NET_ACTIVE_WINDOW")

    def has_focus(self, window):
        """Whether keys go to a window."""
        focus = self._display.get_input_focus().focus
        return getattr(focus, "id", None) == window

    def windows(self, instance):
        """The visible windows of a program by its instance name: {id: rectangle}, lowest first."""
        found = {}
        self._collect(self._root, instance, found)
        return found

    def _collect(self, window, instance, found):
        for child in _or_none(lambda: window.query_tree().children) or []:
            attributes = _or_none(child.get_attributes)
            if not attributes or attributes.map_state != X.IsViewable:
                continue
            name = _or_none(child.get_wm_class)
            if name and name[0] == instance:
                rect = _or_none(lambda found=child: self._rect(found))
                if rect:
                    found[child.id] = rect
            else:
                self._collect(child, instance, found)

    def _rect(self, window):
        size = window.get_geometry()
        place = window.translate_coords(self._root, 0, 0)
        return Rect(-place.x, -place.y, size.width, size.height)

    def cover(self, rect, colour):
        """Covers a rectangle with a window of another program, 0xRRGGBB; with the focus.

        Returns the window's id. It stays until the screen closes.
        """
        depth = self._display.screen().root_depth
        window = self._root.create_window(*rect, 0, depth, background_pixel=colour)
        window.set_wm_class("cover", "Cover")
        window.set_wm_normal_hints(flags=Xutil.USPosition | Xutil.USSize)
        window.map()
        wait_until(lambda: window.get_attributes().map_state == X.IsViewable, "the cover")
        if self._managed:
            wait_until(lambda: self.active_window() == window.id, "the focus of the cover")
        else:
            window.set_input_focus(X.RevertToParent, X.CurrentTime)
            self._display.sync()
        return window.id

    def minimise(self, window):
        """Has the window manager minimise a window, and waits until it has."""
        target = self._display.create_resource_object("window", window)
        target.change_attributes(event_mask=X.StructureNotifyMask)
        request = event.ClientMessage(
            window=target,
            client_type=self.atom("WM_CHANGE_STATE"),
            data=(32, [Xutil.IconicState, 0, 0, 0, 0]),
        )
        mask = X.SubstructureRedirectMask | X.SubstructureNotifyMask
        self._root.send_event(request, event_mask=mask)
        wait_until(lambda: self._seen(X.UnmapNotify), "the window to disappear")
        target.change_attributes(event_mask=X.NoEventMask)

    def _seen(self, kind):
        events = [self._display.next_event() for _ in range(self._display.pending_events())]
        return any(seen.type == kind for seen in events)

    def image(self, rect=Rect(0, 0, *SIZE)):
        """What the rectangle shows, which must lie on the screen."""
        answer = self._root.get_image(*rect, X.ZPixmap, 0xFFFFFFFF)
        return Image(answer.data, rect)

    def pixels(self, window, size):
        """What a square window with alpha holds: rows of (red, green, blue, alpha).

        None while it does not have that size, or when it has gone.
        """
        source = self._display.create_resource_object("window", window)
        try:
            data = source.get_image(0, 0, size, size, X.ZPixmap, 0xFFFFFFFF).data
        except (error.BadMatch, error.BadDrawable):
            return None
        rows = [data[4 * size * y : 4 * size * (y + 1)] for y in range(size)]
        return [
            [(row[x + 2], row[x + 1], row[x], row[x + 3]) for x in range(0, 4 * size, 4)]
            for row in rows
        ]

    def paint(self, colour):
        """Gives the empty screen a colour, 0xRRGGBB."""
        self._root.change_attributes(background_pixel=colour)
        self._root.clear_area()
        self._display.sync()

    def save(self, path, rect=Rect(0, 0, *SIZE)):
        """Writes what the rectangle shows to a picture file, which says nothing of the time."""
        header = b"P6 %d %d 255\n" % (rect.width, rect.height)
        command = ["convert", "ppm:-", "-strip", str(path)]
        subprocess.run(command, input=header + self.image(rect).rgb(), check=True)

    def run(self, *command, timeout=30):
        """Runs a program on this screen and returns its output, as bytes; `timeout` in seconds."""
        done = subprocess.run(
            command, env=self.environment, stdout=subprocess.PIPE, check=True, timeout=timeout
        )
        return done.stdout

    def copy(self, text):
        """Puts a text on the clipboard, as a program that is still running."""
        command = ["xclip", "-quiet", "-selection", "clipboard"]
        self._start(command, self.environment, stdin=subprocess.PIPE)
        self._programs[-1].stdin.write(text.encode())
        self._programs[-1].stdin.close()

    def move(self, x, y):
        self.run("xdotool", "mousemove", str(x), str(y))

    def click(self, x, y, times=1, button=1):
        """Buttons: 1 is left, 2 is the middle one, 3 is right."""
        at = ["mousemove", str(x), str(y)]
        self.run("xdotool", *at, "click", "--repeat", str(times), str(button))

    def press_button(self, x, y, button=1):
        """Presses a button and holds it until `release_button`."""
        self.run("xdotool", "mousemove", str(x), str(y), "mousedown", str(button))

    def release_button(self, x, y, button=1):
        self.run("xdotool", "mousemove", str(x), str(y), "mouseup", str(button))

    def press(self, *keys):
        """Presses and releases each key or combination, by its name ("Return", "alt+q")."""
        self.run("xdotool", "key", *keys)

    def tap(self, key):
        """Presses and releases a key, with less delay than `press`."""
        code = self._display.keysym_to_keycode(XK.string_to_keysym(key))
        xtest.fake_input(self._display, X.KeyPress, code)
        xtest.fake_input(self._display, X.KeyRelease, code)
        self._display.sync()

    def type(self, text):
        self.run("xdotool", "type", "--", text)

    def end(self, number=SIGTERM):
        """Ends the X server with a signal, with every program that is shown on it."""
        self._display.close()
        self._display = None
        _end(self._programs[0], number)

    def named(self, name):
        """The id of the window right on the screen that has that name, visible or not."""
        children = self._root.query_tree().children
        (found,) = (child.id for child in children if _or_none(child.get_wm_name) == name)
        return found

    def disconnect(self, window):
        """Has the X server close the connection of the program that a window belongs to."""
        self._display.create_resource_object("window", window).kill_client()
        self._display.sync()

    def suspend(self):
        """Stops the X server until `resume`: it accepts connections and does not answer."""
        self._programs[0].send_signal(SIGSTOP)

    def resume(self):
        self._programs[0].send_signal(SIGCONT)

    def suspend_manager(self):
        """Stops the window manager until `resume_manager`."""
        self._manager.send_signal(SIGSTOP)

    def resume_manager(self):
        self._manager.send_signal(SIGCONT)

    def close(self):
        if self._display:
            self._display.close()
        server, *clients = self._programs or [None]
        for client in clients:
            client.kill()  # asked to end, trayer sometimes does not
            client.wait()
        if server:
            _end(server, SIGTERM)
        self._folder.cleanup()


def _end(server, number):
    """Ends an X server; it misses a signal that comes just before it waits for requests."""
    while server.poll() is None:
        server.send_signal(number)
        with suppress(subprocess.TimeoutExpired):
            server.wait(1)


def _or_none(ask):
    """The result of `ask`, or None when its window no longer exists."""
    try:
        return ask()
    except (error.BadWindow, error.BadDrawable, error.BadMatch):
        return None
