"""A run with the scripted interface, which calls the launcher's callbacks on command."""

import errno
import json
import os
import select
import socket

import psutil
import system
from component_events import wait_for_start
from components import COMPONENTS
from deadline import DEADLINE, wait_until
from run import Run
from suite import MODULES

# If the interface calls exit(), the supervisor's thread still runs. That is not a leak.
EXITING = {"TSAN_OPTIONS": os.environ.get("TSAN_OPTIONS", "") + " report_thread_leaks=0"}


class Interface(Run):
    """A run without a terminal whose interface is up, ready for commands."""

    def __init__(self, suite, *arguments, environment=None, **options):
        self._connection = None
        install_interface(suite)
        path = suite.folder / "interface.socket"
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as listener:
            listener.bind(str(path))
            listener.listen()
            listener.settimeout(DEADLINE)
            super().__init__(
                suite,
                [*suite.ports_options, "--no-browser", *arguments],
                terminal=None,
                environment={
                    **suite.environment,
                    **EXITING,
                    "TD_SCRIPTED_GUI": str(path),
                    **(environment or {}),
                },
                **options,
            )
            suite.runs.append(self)
            self._connection, _ = listener.accept()
        self._connection.settimeout(DEADLINE)
        self._answers = self._connection.makefile("rb")

    def send(self, *words):
        """Gives a command without waiting for its answer."""
        self._connection.sendall(" ".join(str(word) for word in words).encode() + b"\n")

    def receive(self):
        """The answer to the oldest command that has none yet."""
        answer = json.loads(self._answers.readline())
        assert "error" not in answer, answer
        return answer

    def ask(self, *words):
        """Gives a command and returns its result."""
        self.send(*words)
        return self.receive()["result"]

    def set_ports(self, http, udp):
        """Changes the ports; returns the result and the message ("untouched" if not set)."""
        self.send("set_ports", http, udp)
        answer = self.receive()
        return answer["result"], answer["message"]

    def ports(self):
        return self.ask("http_port"), self.ask("udp_port")

    def running(self):
        """The components that run according to the launcher."""
        return [name for name in COMPONENTS if self.ask("is_running", name)]

    def threads(self):
        """How many threads the launcher has."""
        return psutil.Process(self.pid).num_threads()

    def leave(self):
        """Lets the interface return without a Quit; the launcher's exit status."""
        self.ask("return")
        return self.wait()

    def quit(self):
        """Quits from the menu; the launcher's exit status."""
        self.ask("quit")
        return self.leave()

    def has_answered(self, seconds):
        """Whether an answer comes within that time."""
        return bool(select.select([self._connection], [], [], seconds)[0])

    def close(self):
        if self._connection:
            self._answers.close()
            self._connection.close()
        super().close()


class Gate:
    """A FIFO at which the interface waits for `release`."""

    def __init__(self, suite, name):
        self.fifo = suite.folder / name
        os.mkfifo(self.fifo)

    def release(self):
        def open_fifo():
            try:
                os.close(os.open(self.fifo, os.O_WRONLY | os.O_NONBLOCK))
            except OSError as error:
                assert error.errno == errno.ENXIO  # the interface has not opened it yet
                return False
            return True

        wait_until(open_fifo, "the interface to wait at the gate")


def install_interface(suite):
    """Has the launcher find the scripted interface."""
    system.install_interface(MODULES, suite.folder)


def start_interface(suite, *arguments, **options):
    """A run whose interface is up, and whose components record events and have started."""
    suite.record()
    interface = Interface(suite, *arguments, **options)
    for name in COMPONENTS:
        if f"--no-{name}" not in arguments:
            wait_for_start(suite, name)
    return interface
