"""A launcher started without a terminal on a private screen."""

import json
import re
import shutil
import subprocess
import tempfile
from pathlib import Path

import inherited_signals
import psutil
import suite as suite_module
from components import COMPONENTS
from console import READY, STOPPED
from deadline import DEADLINE, wait_until
from accessible import Accessibility
from bus import Bus
from host import Host
from menu_bar import MenuBar
from screen import FIXED_SIZE, Screen
from tray import Tray

inherited_signals.handle_ignored()


# Variables of the user's own session and preferences, which are kept from the tests.
SESSION = re.compile("(AT_SPI|DBUS|DESKTOP|GDK|GTK|KDE|QT|SESSION|WAYLAND|XDG|XAUTHORITY).*")


def check_stopped_once(run, suite):
    """Checks that a run that has ended said once that it stopped, and has left no component."""
    assert run.output.endswith(STOPPED) and run.output.count(STOPPED) == 1
    assert not suite.processes()


class Desktop:
    """`suite` is the launcher's folder, `screen` the screen, `bus` the session bus (without one,
    None), `menu_bar` what the launcher shows.

    There is a window manager unless `managed` is false, and a bus unless `has_bus` is; `server` is
    as for Screen.
    """

    def __init__(self, managed=True, server=FIXED_SIZE, has_bus=True):
        interface = suite_module.BUILD / "tdgui.so"
        assert interface.exists(), "not built, or TD_BUILD_DIR names another folder"
        self._folder = Path(tempfile.mkdtemp(prefix="td-"))
        self._ports = suite_module.Ports()
        folder = self._folder / "build"  # as in this tree, for the scripts
        folder.mkdir()
        self.suite = suite_module.Suite(folder, self._ports, self._folder)
        shutil.copy2(interface, folder / "tdgui.so")
        environment = {k: v for k, v in self.suite.environment.items() if not SESSION.fullmatch(k)}
        for name in ("TMPDIR", "XDG_RUNTIME_DIR"):
            path = self._folder / name
            path.mkdir(mode=0o700)
            environment[name] = str(path)
        self.screen = self.bus = self.accessibility = self.run = None
        self._panels = []
        self._changes = {}
        try:
            if has_bus:
                self.bus = Bus(self._folder / "session", environment)
                self.accessibility = Accessibility(self.bus)
                environment = {**self.bus.environment, **Accessibility.ENVIRONMENT}
            self.screen = Screen(environment, managed, server)
        except BaseException:
            self.close()
            raise
        self.menu_bar = MenuBar(self.screen, self.accessibility)

    def change(self, environment):
        """Adds to the environment of the launchers that `start` starts."""
        self._changes.update(environment)

    def host(self, **options):
        """A panel on the bus until it is told to die, or the desktop closes."""
        self._panels.append(Host(self.bus, **options))
        return self._panels[-1]

    def tray(self, **options):
        """The same on the screen."""
        self._panels.append(Tray(self.screen, **options))
        return self._panels[-1]

    def wait_until_docked(self, tray):
        """Waits until the icon is in the tray and nowhere else."""
        wait_until(
            lambda: list(self.menu_bar.windows().values()) == [tray.place], "the icon in the tray"
        )

    def docked(self, **options):
        """Starts a tray and waits until it has the icon."""
        tray = self.tray(**options)
        self.wait_until_docked(tray)
        return tray

    def end_panels(self):
        for panel in self._panels:
            panel.die()

    def start(self, *arguments):
        """Starts the launcher on the suite's ports and waits until its icon can be used."""
        self.launch(*self.suite.ports_options, *arguments)
        self.menu_bar.icon()
        if self.accessibility:
            self.menu_bar.wait_until_heard()
        return self.run

    def launch(self, *arguments, **options):
        """Starts the launcher and waits for nothing; `options` are those of `Run`."""
        options.setdefault("terminal", None)
        options.setdefault("environment", {**self.screen.environment, **self._changes})
        self.run = self.suite.start(*arguments, **options)
        return self.run

    def quit(self):
        """Chooses Quit; returns the launcher's exit status."""
        self.menu_bar.choose("Quit")
        return self.run.wait()

    def errors(self):
        """What the launcher has written on standard error, in lines, but for what Qt says of screen
        readers: that they ask about what has just closed, or that their bus has ended."""
        lines = self.run.errors.decode().splitlines()
        return [line for line in lines if not re.search("[Aa]ccessib|QSpi|contacting registry", line)]

    def pids(self):
        """The process ids of hub, receiver and sender."""
        return [self.suite.process(name).pid for name in COMPONENTS]

    def saved_settings(self):
        """The settings file's contents; nothing while it is missing or being written."""
        try:
            return json.loads(self.suite.settings.read_text())
        except (FileNotFoundError, ValueError):
            return {}

    def dashboard_address(self):
        """The dashboard's address as the launcher has printed it."""
        self.run.wait_for(READY)
        line = next(row for row in self.run.output.splitlines() if b"Dashboard  :" in row)
        return re.search(rb"http://[0-9.:]+/", line).group().decode()

    def clipboard(self):
        """The text on the clipboard; None when there is none."""
        try:
            return self.screen.run("xclip", "-o", "-selection", "clipboard").decode()
        except subprocess.CalledProcessError:
            return None

    def processes(self):
        """Everything that runs with the private home: the suite and what the desktop started."""
        found = []
        for process in psutil.process_iter():
            try:
                home = process.environ().get("HOME")
                if home == str(self.suite.home) and process.status() != psutil.STATUS_ZOMBIE:
                    found.append(process)
            except (psutil.NoSuchProcess, psutil.AccessDenied):
                continue
        return found

    def close(self):
        """Ends everything; returns the processes that had to be killed."""
        left = self.suite.close()
        self.end_panels()
        if self.screen:
            self.screen.close()
        if self.accessibility:
            self.accessibility.close()
        if self.bus:
            self.bus.end()
        self._ports.close()
        # What the bus has started ends by itself.
        psutil.wait_procs(self.processes(), timeout=min(10, DEADLINE))
        for process in self.processes():
            left.append(process)
            process.kill()
        shutil.rmtree(self._folder)
        return [str(process) for process in left]
