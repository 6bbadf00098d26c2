"""A way to stop the launcher at its next message."""

import os


class BlockedStderr:
    """A full pipe for the launcher's standard error: nothing can be written until `release`.

    The launcher blocks at its next message, so that a test can arrange what it finds next.
    """

    def __init__(self):
        self._reading, self.writing = os.pipe()
        self._filled = 0
        os.set_blocking(self.writing, False)
        for size in (4096, 1):  # what is too much for the rest of the pipe may be refused whole
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
