"""Blocks the launcher at its next message."""

import os


class BlockedStderr:
    """A full pipe for the launcher's standard error: the next message blocks until `release`.

    Meanwhile a test can arrange what the launcher finds next.
    """

    def __init__(self):
        self._reading, self.writing = os.pipe()
        self._filled = 0
        os.set_blocking(self.writing, False)
        for size in (4096, 1):  # a write larger than the rest of the pipe may fail completely
            self._fill(b" " * size)
        os.set_blocking(self.writing, True)

    def _fill(self, data):
        while True:
            try:
                self._filled += os.write(self.writing, data)
            except BlockingIOError:
                return

    def release(self):
        while self._filled > 0:
            self._filled -= len(os.read(self._reading, self._filled))

    def text(self):
        """What was written after `release`, once the launcher and its components have ended."""
        os.close(self.writing)
        with open(self._reading, "rb") as pipe:
            return pipe.read().decode()
