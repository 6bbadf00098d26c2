"""A private session bus, and talking to programs on a bus."""

import subprocess
from pathlib import Path
from signal import SIGCONT, SIGKILL, SIGSTOP

from deadline import DEADLINE
from gi.repository import Gio, GLib

CONFIGURATION = """<busconfig>
  <type>session</type>
  <listen>unix:path={folder}/bus</listen>
  <auth>EXTERNAL</auth>
  <servicedir>{folder}/services</servicedir>
  <limit name="max_replies_per_connection">50000</limit>
  <limit name="max_incoming_bytes">1000000000</limit>
  <limit name="max_outgoing_bytes">1000000000</limit>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""
ACCESSIBILITY = "org.a11y.Bus.service"  # the only service that it starts


def connect(address):
    """A connection of its own to the bus with that address."""
    flags = Gio.DBusConnectionFlags
    flags = flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


def call(connection, owner, path, interface, method, arguments=None):
    """Calls a method of a program's; returns its results."""
    return connection.call_sync(
        owner, path, interface, method, arguments, None,
        Gio.DBusCallFlags.NONE, int(DEADLINE * 1000), None,
    ).unpack()  # fmt: skip


def own(connection, name):
    """Gives the connection's program a name, which nobody may own yet, until it ends."""
    bus, path = "org.freedesktop.DBus", "/org/freedesktop/DBus"
    assert call(connection, bus, path, bus, "RequestName", GLib.Variant("(su)", (name, 4))) == (1,)


def dispatch():
    """Handles the signals and the answers that have come."""
    while GLib.MainContext.default().iteration(False):
        pass


class Bus:
    """A bus whose files are in an empty folder; `environment` adds its address to what is given."""

    def __init__(self, folder, environment):
        self._folder = Path(folder)
        services = self._folder / "services"
        services.mkdir(parents=True)
        (services / ACCESSIBILITY).symlink_to(f"/usr/share/dbus-1/services/{ACCESSIBILITY}")
        configuration = self._folder / "configuration"
        configuration.write_text(CONFIGURATION.format(folder=self._folder))
        self.address = f"unix:path={self._folder}/bus"
        self.environment = {**environment, "DBUS_SESSION_BUS_ADDRESS": self.address}
        command = ["dbus-daemon", f"--config-file={configuration}", "--nofork", "--nosyslog"]
        self._process = subprocess.Popen(
            [*command, "--print-address"],
            env=self.environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
        )
        if not self._process.stdout.readline():
            self.end()
            raise AssertionError("the bus has not started")

    def suspend(self):
        """Stops the bus until `resume`: it accepts connections and does not answer."""
        self._process.send_signal(SIGSTOP)

    def resume(self):
        self._process.send_signal(SIGCONT)

    def end(self):
        """Ends the bus, if it still runs, and with it what it has started."""
        self._process.send_signal(SIGKILL)
        self._process.wait()
        self._process.stdout.close()
