"""A Wayland compositor without hardware."""

import subprocess
from pathlib import Path
from signal import SIGKILL

from deadline import wait_until


class Compositor:
    """Weston without hardware, on a socket in the runtime folder of the desktop."""

    def __init__(self, desktop):
        environment = {**desktop.screen.environment}
        del environment["DISPLAY"]
        self.environment = {**environment, "WAYLAND_DISPLAY": "wayland-test"}
        command = ["weston", "--backend=headless-backend.so", "--socket=wayland-test"]
        self._process = subprocess.Popen(
            [*command, "--no-config", "--idle-time=0"],
            env=environment,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        socket = Path(environment["XDG_RUNTIME_DIR"], "wayland-test")
        wait_until(socket.exists, "the compositor")

    def end(self, number=SIGKILL):
        self._process.send_signal(number)
        self._process.wait()
