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
from deadline import DEADLINE
from menu_bar import MenuBar
from screen import FIXED_SIZE, Screen

inherited_signals.handle_ignored()


class Desktop:
    """`suite` is the launcher's folder, `screen` the screen, `menu_bar` what the launcher shows.

    There is a window manager unless `managed` is false; `server` is as for Screen.
    """

    def __init__(self, managed=True, server=FIXED_SIZE):
        # Short: GNUstep's sockets lie below it, and a socket's path has little over 100 characters.
        self._folder = Path(tempfile.mkdtemp(prefix="td-"))
        self._ports = suite_module.Ports()
        folder = self._folder / "build"  # as in this tree, for the scripts
        folder.mkdir()
        self.suite = suite_module.Suite(folder, self._ports, self._folder)
        shutil.copy2(suite_module.BUILD / "tdgui.so", folder / "tdgui.so")
        temporary = self._folder / "tmp"
        temporary.mkdir()
        # The pasteboard server is found by a name in the folder for temporary files.
        private = dict.fromkeys(("TEMP", "TMP", "TMPDIR"), str(temporary))
        self.screen = None
        try:
            self.screen = Screen({**self.suite.environment, **private}, managed, server)
        except BaseException:
            self.close()
            raise
        self.menu_bar = MenuBar(self.screen)
        self.run = None
        self._changes = {}

    def change(self, environment):
        """Adds to the environment of the launchers that `start` starts."""
        self._changes.update(environment)

    def start(self, *arguments):
        """Starts the launcher on the suite's ports and waits until its icon is there."""
        self.launch(*self.suite.ports_options, *arguments)
        self.menu_bar.icon()
        return self.run

    def launch(self, *arguments, **options):
        """Starts the launcher and waits for nothing; `options` are those of `Run`."""
        options.setdefault("terminal", None)
        options.setdefault("environment", {**self.screen.environment, **self._changes})
        self.run = self.suite.start(*arguments, **options)
        return self.run

    def quit(self):
        """Chooses Quit; returns the launcher's exit status."""
        self.menu_bar.choose("quit")
        return self.run.wait()

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
        if self.screen:
            self.screen.close()
        self._ports.close()
        # A pasteboard server ends by itself when its screen or its last client has gone.
        psutil.wait_procs(self.processes(), timeout=min(10, DEADLINE))
        for process in self.processes():
            left.append(process)
            process.kill()
        shutil.rmtree(self._folder)
        return [str(process) for process in left]
