"""Where commands of documents are run as they stand there."""

import re
import shutil

from clone import Clone
from components import PROGRAMS
from console import READY
from deadline import wait_until
from run import Run
from suite import BUILD, Suite

# What stands for a port in a command: the default ones and those like them.
PORT = re.compile(r"\b44\d\d\b")
SETTINGS = '{{"http_port": {}, "udp_port": {}}}\n'


class Place:
    """The top folder of a clone, with a home folder of its own, where the folder "suite" holds the
    stand-ins as a suite's own programs. Ports are private ones: saved as settings, and put in place
    of those in a command. Of the build folder there is what is run and installed.
    """

    def __init__(self, folder, ports):
        build = folder / "build"
        build.mkdir()
        self.suite = Suite(build, ports, folder)
        self.clone = Clone(self.suite)
        self._ports = {"4466": self.suite.http, "4465": self.suite.udp}
        shutil.copy2(BUILD / "cmake_install.cmake", build)
        shutil.copytree(build, self.suite.home / "suite", ignore=lambda _, names: {*names} - {*PROGRAMS})
        for settings in (self.suite.settings, build / "suite/config/launcher.json"):
            settings.parent.mkdir(parents=True)
            settings.write_text(SETTINGS.format(self.suite.http, self.suite.udp))

    def _private_port(self, match):
        if match[0] not in self._ports:
            self._ports[match[0]] = self.suite.ports.free()
        return str(self._ports[match[0]])

    def run(self, command, text=None, beside_a_run=False):
        """Runs a command in a terminal; returns its status and what it printed. With `text` it goes
        on until it has printed that, and gets a Ctrl-C. `beside_a_run`: while the suite is up."""
        other = self._start("scripts/run --no-browser") if beside_a_run else None
        if other:
            other.wait_for(READY)
        run = self._start(PORT.sub(self._private_port, command))
        if text:
            run.wait_for(text)
            run.interrupt()
        status = run.wait()
        if other:
            other.interrupt()
            assert other.wait() == 0
        wait_until(lambda: not self.suite.processes(), "the end of all processes")
        return status, run.text.decode(errors="replace")

    def _start(self, command):
        # bash: after a Ctrl-C its status is the command's, and not that of the signal.
        run = Run(
            self.suite, ["-c", command], program="/bin/bash", terminal="all", cwd=self.clone.folder
        )
        self.suite.runs.append(run)
        return run
