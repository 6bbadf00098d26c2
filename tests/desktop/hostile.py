"""Programs on the bus that call what an icon exports, in ways that a well-made panel does not."""

import os
import socket

from bus import connect, dispatch
from deadline import DEADLINE
from gi.repository import Gio, GLib
from host import ITEM, ITEM_PATH, MENU, PROPERTIES, WHOLE_MENU, Host, Row, find_row


class Caller:
    """A program that calls what the icon exports; each call is a method, a type and arguments."""

    def __init__(self, bus, item):
        self._address = bus.address
        self._connection = connect(bus.address)
        self._path = item.get("Menu")
        self._name = item.name
        self._answers = 0

    def _target(self, interface):
        path = {MENU: self._path, ITEM: ITEM_PATH, PROPERTIES: ITEM_PATH}[interface]
        return self._name, path, interface

    def call(self, method, kind, *arguments, interface=MENU):
        """Returns the results, or the name of the error that was the answer."""
        try:
            return self._connection.call_sync(
                *self._target(interface), method, GLib.Variant(kind, arguments), None,
                Gio.DBusCallFlags.NONE, int(DEADLINE * 1000), None,
            ).unpack()  # fmt: skip
        except GLib.Error as error:
            name = Gio.DBusError.get_remote_error(error)
            assert name, error  # no answer
            return name

    def rows(self):
        """The menu's rows, for which no opening is announced."""
        _, (_, _, rows) = self.call(*WHOLE_MENU)
        return [Row(*row) for row in rows]

    def row(self, *titles):
        """A row by how its title begins, or one of its submenu's."""
        return find_row(self.rows(), *titles)

    def send(self, *calls):
        """Makes all calls at once; `answered` tells of the answers."""

        def count(connection, result):
            connection.call_finish(result)
            self._answers += 1

        self._answers = 0
        for method, kind, *arguments in calls:
            self._connection.call(
                *self._target(MENU), method, GLib.Variant(kind, arguments), None,
                Gio.DBusCallFlags.NONE, int(DEADLINE * 1000), None, count,
            )  # fmt: skip
        self._connection.flush_sync()

    def answered(self):
        """How many of the calls that were sent have been answered."""
        dispatch()
        return self._answers

    def send_unread(self, *calls):
        """Makes the calls from a connection that reads no answer; returns its socket."""
        raw = socket.socket(socket.AF_UNIX)
        raw.connect(self._address.removeprefix("unix:path="))
        raw.sendall(b"\0AUTH EXTERNAL %s\r\n" % str(os.getuid()).encode().hex().encode())
        assert raw.recv(100).startswith(b"OK ")
        bus = ("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus")
        messages = [Gio.DBusMessage.new_method_call(*bus, "Hello")]
        for method, kind, *arguments in calls:
            messages.append(Gio.DBusMessage.new_method_call(*self._target(MENU), method))
            messages[-1].set_body(GLib.Variant(kind, arguments))
        sent = b"BEGIN\r\n"
        for serial, message in enumerate(messages, 1):
            message.set_serial(serial)
            sent += message.to_blob(Gio.DBusCapabilityFlags.NONE)
        raw.sendall(sent)
        return raw

    def close(self):
        self._connection.close_sync(None)


class RefusingHost(Host):
    """A panel that answers an icon that registers with an error."""

    def _call(self, _connection, _sender, _path, _interface, method, _arguments, invocation):
        self._note(method)
        invocation.return_dbus_error("org.freedesktop.DBus.Error.Failed", "no place")
