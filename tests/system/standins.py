"""The stand-ins in a private folder, started one by one and observed from outside."""

import fcntl
import http.client
import json
import os
import pty
import select
import signal
import socket
import struct
import subprocess
import tempfile
import termios
import time
from pathlib import Path

from components import PROGRAMS, client_arguments, hub_arguments
from deadline import DEADLINE, wait_until
from suite import STAND_INS, Ports


class StandIns:
    """A private folder with the stand-ins, and the processes started there."""

    def __init__(self):
        self._folder = tempfile.TemporaryDirectory(prefix="tandrel-stand-ins-")
        self.folder = Path(self._folder.name).resolve()
        self.ports = Ports()
        self.udp = self.ports.free()
        self.http = self.ports.free()
        self._processes = []
        for name in PROGRAMS:
            (self.folder / name).symlink_to(STAND_INS / name)

    def set_behaviour(self, name, words):
        (self.folder / f"{name}.behaviour").write_text(words)

    def usual_arguments(self, name):
        """The arguments that the launcher would use."""
        if name == "td_hub":
            return hub_arguments(self.http, self.udp)
        return [] if name == "td_align" else client_arguments(self.udp)

    def start(self, name, *arguments, environment=None, **options):
        """Starts a program, with its usual arguments unless others are given."""
        settings = {
            "stdin": subprocess.DEVNULL,
            "stdout": subprocess.PIPE,
            "stderr": subprocess.PIPE,
        }
        process = subprocess.Popen(
            [str(self.folder / name), *(arguments or self.usual_arguments(name))],
            env={**os.environ, **(environment or {})},
            **{**settings, **options},
        )
        self._processes.append(process)
        return process

    def run(self, name, *arguments, **options):
        """Runs a program to its end: its status, output and errors."""
        process = self.start(name, *arguments, **options)
        output, errors = process.communicate(timeout=DEADLINE)
        return process.returncode, output, errors

    def start_hub(self, **options):
        """Starts a hub and waits for its dashboard."""
        hub = self.start("td_hub", **options)
        wait_until(lambda: self.answers() or hub.poll() is not None, "the dashboard")
        assert hub.poll() is None, hub.stderr.read()
        return hub

    def get(self, path, timeout=DEADLINE):
        """The status and the body of the hub's answer."""
        connection = http.client.HTTPConnection("127.0.0.1", self.http, timeout=timeout)
        try:
            connection.request("GET", path)
            response = connection.getresponse()
            return response.status, response.read().decode()
        finally:
            connection.close()

    def answers(self):
        try:
            return self.get("/api/health")[0] == 200
        except OSError:
            return False

    def state(self):
        return json.loads(self.get("/api/state")[1])

    def registered(self, process):
        """The hub's entry for a process, or None."""
        entries = self.state()["registrations"]
        return next((entry for entry in entries if entry["pid"] == process.pid), None)

    def wait_registered(self, process):
        return wait_until(lambda: self.registered(process), "a registration")

    def connect(self):
        """A bare connection to the dashboard port."""
        return socket.create_connection(("127.0.0.1", self.http), timeout=DEADLINE)

    def events(self, name="events.jsonl"):
        path = self.folder / name
        return [json.loads(line) for line in path.read_text().splitlines()] if path.exists() else []

    def wait_event(self, event):
        """Waits for the first recorded event of that kind."""
        return wait_until(
            lambda: next((row for row in self.events() if row["event"] == event), None), event
        )

    def close(self):
        for process in self._processes:
            if process.poll() is None:
                process.kill()
            process.wait()
            for stream in (process.stdout, process.stderr):
                if stream:
                    stream.close()
        self.ports.close()
        self._folder.cleanup()


class Terminal:
    """A terminal for a program's output; `text` is what `read` has read so far."""

    def __init__(self, columns=80):
        self.master, self.slave = pty.openpty()
        fcntl.ioctl(self.slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        self.text = ""

    def read(self):
        while select.select([self.master], [], [], 0)[0]:
            self.text += os.read(self.master, 65536).decode()
        return self.text

    def wait_for(self, text):
        wait_until(lambda: text in self.read(), f"{text!r}")

    def pause(self):
        """What Ctrl-S does."""
        termios.tcflow(self.slave, termios.TCOOFF)

    def close(self):
        os.close(self.master)
        os.close(self.slave)


def end(process, number=signal.SIGTERM):
    """Ends a process with a signal: its exit status and the seconds that it took."""
    start = time.monotonic()
    process.send_signal(number)
    status = process.wait(timeout=DEADLINE)
    return status, time.monotonic() - start
