"""A way to stop the launcher at its next message."""

import fcntl
import os


class BlockedStderr:
    """A full pipe for the launcher's standard error: nothing can be written until `release`.

    The launcher blocks at its next message, so that a test can arrange what it finds next.
    """

    def __init__(self):
        self._reading, self.writing = os.pipe()
        size = fcntl.fcntl(self.writing, fcntl.F_SETPIPE_SZ, 4096)
        os.write(self.writing, b" " * size)

    def release(self):
        os.read(self._reading, 65536)

    def text(self):
        """What was written after `release`, once the launcher and its components have ended."""
        os.close(self.writing)
        with open(self._reading, "rb") as pipe:
            return pipe.read().decode()
