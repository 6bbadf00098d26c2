"""A library that changes what the launcher finds; preload.c says how."""

import os
import subprocess
from pathlib import Path

from deadline import wait_until


def preloaded(folder, **changes):
    """The environment of a launcher with these changes; the library is built in the folder."""
    library = Path(folder, "preload.so")
    source = Path(__file__).with_name("preload.c")
    subprocess.run(["cc", "-shared", "-fPIC", "-o", library, source], check=True)
    return {"LD_PRELOAD": str(library), **changes}


class Gate:
    """Where a launcher waits with the environment that `environment` gives."""

    def __init__(self, folder):
        self._folder = folder
        self._fifo = Path(folder, "gate")
        self._writer = None
        os.mkfifo(self._fifo)

    def environment(self, change):
        """`change` is TD_GATE, TD_JOIN or TD_EXIT."""
        return preloaded(self._folder, **{change: str(self._fifo)})

    def wait_for_call(self):
        self._writer = wait_until(self._open_if_read, "the call that waits")

    def _open_if_read(self):
        try:
            return os.open(self._fifo, os.O_WRONLY | os.O_NONBLOCK)
        except OSError:
            return None  # nobody reads it

    def open(self):
        """Lets the call go on."""
        os.close(self._writer)
