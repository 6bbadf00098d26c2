"""Runs the commands of documents as they are written."""

import re
import shutil

from clone import Clone
from components import PROGRAMS
from console import READY
from deadline import wait_until
from run import Run
from suite import BUILD, Suite

# Ports in commands: the default ones and similar numbers.
PORT = re.compile(r"\b44\d\d\b")
SETTINGS = '{{"http_port": {}, "udp_port": {}}}\n'


class Sandbox:
    """A clone with a private home folder, in which the folder "suite" has the stand-ins in the role of
    the suite's own programs. Its build folder has only what is run and installed. The ports are private:
    they are in the settings files, and replace those in the commands.
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
        """Runs a command in a terminal; returns its status and its output.

        `text`: wait for this output, then press Ctrl-C. `beside_a_run`: run it while the suite is up.
        """
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
        # After Ctrl-C, bash exits with the command's status, not with the signal's.
        run = Run(
            self.suite, ["-c", command], program="/bin/bash", terminal="all", cwd=self.clone.folder
        )
        self.suite.runs.append(run)
        return run
