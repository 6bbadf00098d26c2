"""One run of the launcher, with pipes or with a terminal."""

import os
import pty
import select
import subprocess
import sys
import termios
import threading
import time
from signal import SIGINT

from deadline import DEADLINE

CTRL_C = b"\x03"
CTRL_BACKSLASH = b"\x1c"


class Run:
    """A running launcher.

    `terminal`: None (no terminal), "input" (standard input is a terminal; output and errors are
    pipes), "output" (standard output is a terminal; input is empty, errors are a pipe), or "all" (a
    controlling terminal for all three, whose Ctrl-C works). What a terminal shows is in `output`,
    with its "\\r\\n".
    """

    def __init__(
        self, suite, arguments, terminal="input", environment=None, program=None, **options
    ):
        self.suite = suite
        self.terminal = None
        self._text = {"output": b"", "errors": b""}
        self._changed = threading.Condition()
        self._readers = []
        self._leave, self._leaving = os.pipe()  # readable once the terminal is to be closed
        command = [str(program or suite.launcher), *arguments]
        options.setdefault("cwd", suite.folder)
        options["env"] = suite.environment if environment is None else environment
        slave = None
        if terminal:
            self.terminal, slave = pty.openpty()
        if terminal == "all":
            streams = {"stdin": slave, "stdout": slave, "stderr": slave}
            options["start_new_session"] = True
            _keep_text_at_ctrl_c(slave)
            executed, held_until_then = os.pipe()
            options["pass_fds"] = [*options.get("pass_fds", ()), held_until_then]
            command = [sys.executable, "-IS", "-c", _TAKE_TERMINAL, str(held_until_then), *command]
        else:
            streams = {
                "stdin": slave if terminal == "input" else subprocess.DEVNULL,
                "stdout": slave if terminal == "output" else subprocess.PIPE,
                "stderr": subprocess.PIPE,
            }
        self.process = subprocess.Popen(command, **{**streams, **options})
        if slave is not None:
            os.close(slave)
        if terminal == "all":
            os.close(held_until_then)
            os.read(executed, 1)  # end of file: the launcher runs now
            os.close(executed)
        self._read("output", self.process.stdout.fileno() if self.process.stdout else self.terminal)
        if self.process.stderr:
            self._read("errors", self.process.stderr.fileno())

    def _read(self, name, descriptor):
        watched = [descriptor, self._leave] if descriptor == self.terminal else [descriptor]

        def pump():
            while True:
                ready, _, _ = select.select(watched, [], [])
                if descriptor not in ready:
                    return
                try:
                    data = os.read(descriptor, 65536)
                except OSError:  # a terminal that no process has open any more
                    data = b""
                with self._changed:
                    self._text[name] += data
                    self._changed.notify_all()
                if not data:
                    return

        thread = threading.Thread(target=pump, daemon=True)
        thread.start()
        self._readers.append(thread)

    @property
    def pid(self):
        return self.process.pid

    @property
    def output(self):
        return self._text["output"]

    @property
    def text(self):
        """The output of a terminal with plain line ends and without the echo of control keys."""
        plain = self.output.replace(b"\r\n", b"\n")
        return plain.replace(b"^C", b"").replace(b"^\\", b"")

    @property
    def errors(self):
        return self._text["errors"]

    def wait_for(self, text, stream="output", count=1):
        """Waits until `text` has appeared `count` times."""
        wanted = text.encode() if isinstance(text, str) else text
        with self._changed:
            seen = self._changed.wait_for(
                lambda: self._text[stream].count(wanted) >= count, timeout=DEADLINE
            )
        assert seen, f"no {text!r} in {self._text!r}"

    def press(self, key):
        """Presses a key at the terminal (of a run with `terminal="all"`)."""
        os.write(self.terminal, key)

    def interrupt(self):
        """Presses Ctrl-C at the terminal."""
        self.press(CTRL_C)

    def signal(self, number):
        os.kill(self.pid, number)

    def wait_for_process(self, deadline=None):
        """Waits only for the launcher's end: others may still write. Returns the exit status."""
        return self.process.wait(timeout=deadline or DEADLINE)

    def wait(self, deadline=None):
        """Waits for the launcher's end and the end of its output; returns the exit status."""
        status = self.wait_for_process(deadline)
        if self.process.stdout:
            for reader in self._readers:
                reader.join(DEADLINE)
        else:
            time_limit = time.monotonic() + 2
            for reader in self._readers:  # components may keep the terminal open
                reader.join(max(0, time_limit - time.monotonic()))
        return status

    def stop(self, number=SIGINT):
        """Ends the run with a signal and waits for it."""
        self.signal(number)
        return self.wait()

    def hang_up(self):
        """Closes the terminal, as closing its window does."""
        # A blocked read keeps a terminal open even after a close, so the reader ends first.
        os.write(self._leaving, b"x")
        if not self.process.stdout:
            self._readers[0].join(DEADLINE)
        os.close(self.terminal)
        self.terminal = None

    def close(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        if self.terminal is not None:
            self.hang_up()
        os.close(self._leave)
        os.close(self._leaving)
        for stream in (self.process.stdout, self.process.stderr):
            if stream:
                stream.close()


def _keep_text_at_ctrl_c(terminal):
    """By default a terminal discards unread output at Ctrl-C."""
    attributes = termios.tcgetattr(terminal)
    attributes[3] |= termios.NOFLSH
    termios.tcsetattr(terminal, termios.TCSANOW, attributes)


# Makes the terminal on standard input the controlling one and executes the launcher, which closes the
# descriptor in the first argument. Signals that Python ignores get their defaults back.
_TAKE_TERMINAL = (
    "import fcntl, os, signal, sys, termios;"
    "fcntl.ioctl(0, termios.TIOCSCTTY, 0);"
    "signal.signal(signal.SIGPIPE, signal.SIG_DFL);"
    "signal.signal(signal.SIGXFSZ, signal.SIG_DFL);"
    "os.set_inheritable(int(sys.argv[1]), False);"
    "os.execv(sys.argv[2], sys.argv[2:])"
)
