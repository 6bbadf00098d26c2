"""A run in a private folder, and what the world does to it and to its model."""

import os
import re
import socket
import termios
import time
from contextlib import suppress
from signal import SIGCONT, SIGINT, SIGKILL, SIGSTOP, SIGTERM

import console
import psutil
import system
from comparison import Comparison
from component_events import KILL_DELAY, SECOND
from components import COMPONENTS
from console import READY
from deadline import wait_until
from interface import Interface
from model import Model

# A shell with job control; nothing but the launcher writes to the terminal.
SHELL = (
    "set -m; exec 3>&1 >/dev/null 2>&1; "
    '"$0" "$@" >&3 2>&3 3>&-; status=$?; '
    "while [ $status = 148 ]; do read -r _; fg; status=$?; done; exit $status"
)
CTRL_Z = b"\x1a"
NAMED = re.compile(r"Tandrel: (?:restarting )?the (\w+)")


class World(Comparison):
    """`say` notes each step in plain words, for the report of a broken rule."""

    def __init__(self, suite, mode):
        self.suite, self.mode = suite, mode
        self.model = Model(suite.folder, suite.http, suite.udp, mode == "menu")
        self.story = [mode]
        self.run = None
        self.pid = None
        self.ended_ns = {}  # when a process was made to end, by its id
        self.sockets = []
        self.orphans = set()  # processes of a launcher that was killed
        self.suspensions = []  # s before each Ctrl-Z during the start
        self.hub_late_ms = 0  # how long the first hub does not answer
        self.final_text = None  # of a terminal that has been closed
        self.ports_options = suite.ports_options
        suite.record()
        self.known_files = set(os.listdir(suite.folder)) | {"config", "events.jsonl", "launcher.json"}
        if mode == "menu":
            self.known_files |= {"tdgui.so", "interface.socket"}

    # --- Start-up

    def launch(self, *options):
        """Starts the launcher, and does not wait for anything but the menu."""
        suite = self.suite
        if self.mode == "menu":
            self.run = Interface(suite, *options)
        elif self.mode == "shell":
            self.run = suite.start(
                "-c", SHELL, suite.launcher, *self.ports_options, *options, program="/bin/sh", terminal="all"
            )
        else:
            terminal = None if self.mode == "service" else self.mode
            self.run = suite.start(*self.ports_options, *options, terminal=terminal)
        if self.run.terminal is not None:
            attributes = termios.tcgetattr(self.run.terminal)
            attributes[3] &= ~termios.ECHO
            termios.tcsetattr(self.run.terminal, termios.TCSANOW, attributes)
        self.pid = self.run.pid
        if self.mode == "shell":
            for pause in self.suspensions:
                self._suspend_start(pause)
            self.pid = wait_until(lambda: suite.events("start"), "the hub")[0]["ppid"]

    def _suspend_start(self, pause):
        """Presses Ctrl-Z at any moment of the start. It may come too early or too late for the launcher."""
        time.sleep(pause)  # not a wait: the step is about this moment
        if READY.encode() in self.run.output:
            return
        self.run.press(CTRL_Z)

        def suspended():
            return any(system.is_suspended(child.pid) for child in psutil.Process(self.run.pid).children())

        wait_until(lambda: suspended() or READY.encode() in self.run.output, "a start that is suspended or complete")
        time.sleep(0.1)  # the start may have been completed just before it is suspended
        if suspended():
            self.run.press(b"\n")
            wait_until(lambda: not suspended(), "fg")

    # --- The components and their files

    def own(self, name=None):
        """The start events of the launcher's own components."""
        program = f"td_{name}" if name else None
        return [row for row in self.suite.events("start", program) if row["ppid"] == self.pid]

    def component_pid(self, name):
        return self.own(name)[-1]["pid"]

    def kill(self, name, number=SIGKILL):
        """Sends a signal to a component; a SIGTERM that it ignores does not end it."""
        c = self.model.components[name]
        pid = self.component_pid(name)
        if number in (SIGTERM, SIGINT):
            ignored = c.ignores and number == SIGTERM
            self.model.signals.append(("ignored" if ignored else "stop", f"td_{name}"))
            if ignored:
                os.kill(pid, number)
                return
        self.model.exits(name)
        self.ended_ns[pid] = time.monotonic_ns()
        os.kill(pid, number)
        wait_until(lambda: system.has_ended(pid), f"the end of the {name}")

    def freeze(self, name):
        self.model.components[name].frozen = True
        os.kill(self.component_pid(name), SIGSTOP)

    def thaw(self, name):
        self.model.components[name].frozen = False
        os.kill(self.component_pid(name), SIGCONT)

    def behave(self, name, words):
        """Sets a component's misbehaviour from its next start on."""
        self.model.components[name].behaviour = words
        path = self.suite.folder / f"td_{name}.behaviour"
        staging = path.with_suffix(".new")
        staging.write_text(f"{words} record=events.jsonl\n")
        staging.rename(path)

    def replace(self, name, state):
        """Puts a component's program into another state; its process goes on."""
        self.model.components[name].file = state
        path = self.suite.component(name)
        path.unlink(missing_ok=True)
        if state == "good":
            self.suite.install(name)
        elif state != "gone":
            staging = path.with_suffix(".new")
            staging.write_bytes(b"\0 no program\n")
            staging.chmod(0o755 if state == "no program" else 0o644)
            staging.rename(path)

    def take(self, port, kind, listens):
        """Has another program open a port."""
        taken = socket.socket(socket.AF_INET, kind)
        taken.bind(("", port))
        if listens:
            taken.listen()
        self.sockets.append(taken)
        self.model.taken.add(port)

    def give_back(self):
        for taken in self.sockets:
            taken.close()
        self.sockets.clear()
        self.model.taken.clear()

    def leave_orphans(self):
        """A launcher is killed, and its components go on, with the ports."""
        orphaned = self.suite.start(*self.suite.ports_options, "--no-browser", terminal=None)
        for name in COMPONENTS:
            wait_until(lambda name=name: self.suite.events("start", f"td_{name}"), f"the {name}")
        orphaned.signal(SIGKILL)
        orphaned.wait_for_process()
        self.orphans = {process.pid for process in self.suite.processes()}
        self.model.taken.update(self.model.ports)

    def limit_files(self, size):
        self.model.disk_is_full = size == 0
        system.limit_file_size(self.pid, size)

    # --- The launcher

    def suspended(self, action):
        """Does something while the launcher is suspended: by Ctrl-Z in a shell, which resumes it by fg."""
        if self.mode == "shell":
            self.run.press(CTRL_Z)
        else:
            os.kill(self.pid, SIGSTOP)
        wait_until(lambda: system.is_suspended(self.pid), "the launcher to be suspended")
        action()
        before = len(self.messages())
        if self.mode == "shell":
            self.run.press(b"\n")
            wait_until(lambda: not system.is_suspended(self.pid), "fg")
        else:
            os.kill(self.pid, SIGCONT)
        if self.model.status is None and self.model.unnoticed():
            # It may have been suspended in the middle of a pass.
            named = wait_until(lambda: NAMED.search(self.messages(), before), "a message about a component")
            self.model.supervise(named[1])

    def signal(self, number):
        with suppress(ProcessLookupError):  # the run may have ended
            os.kill(self.pid, number)

    def messages(self):
        return self.text("output" if self.mode in ("all", "shell") else "errors")

    def end_supervision(self, number, threads):
        """Behind the menu a signal ends only the supervision: waits for the end of one of those threads."""
        os.kill(self.pid, number)
        wait_until(lambda: self.run.threads() < threads, "the end of the supervision")
        self.model.running = False

    def signal_at(self, name, delay, number):
        """A component exits, and after `delay` s the launcher gets a signal: either may be noticed first."""
        c = self.model.components[name]
        words = [text.format(name) for text in (console.RESTARTING, console.LEFT_STOPPED)]

        def count():
            return [self.messages().count(word) for word in words]

        before = count()
        threads = self.run.threads() if self.mode == "menu" else 0
        self.kill(name)
        time.sleep(delay)  # not a wait: the step is about this moment
        if self.mode == "menu":
            self.end_supervision(number, threads)
        else:
            self.signal(number)
            self.finish()
        self.model.running = True
        if count() != before:
            self.model.visit(c)
        self.model.running = False
        if self.mode != "menu":
            self.model.end()
            self.forgive(c)

    def forgive(self, c):
        """A component that was started just before the end may have recorded nothing."""
        starts = [start for start in self.model.starts if start[0] == c.name]
        if len(self.own(c.name)) < len(starts):
            _remove_last(self.model.starts, starts[-1])
        for event in ("stop", "ignored"):
            signal = event, f"td_{c.name}"
            if self.signals().count(signal) < self.model.signals.count(signal):
                _remove_last(self.model.signals, signal)

    def hang_up(self):
        """Closes the terminal, so that nobody sees the last lines."""
        self.settle()
        self.final_text = self.text(None)
        self.run.hang_up()
        self.model.end()
        del self.model.printed[-2:]

    def finish(self):
        self.status = self.run.wait()

    def operate(self, expect, act):
        """An operation of the model and the launcher's, whose results it compares.

        It must take as long as the components need that are killed meanwhile.
        """
        kills = self.model.kills
        expected = expect()
        started = time.monotonic()
        self.check("the result of the operation", expected, act())
        least = KILL_DELAY / SECOND * (self.model.kills - kills)
        rule = "a component that does not end at SIGTERM gets SIGKILL 4 s later"
        self.check(rule, True, time.monotonic() - started >= least)

    def start_second_copy(self, udp, http):
        run = self.suite.start("--http-port", http, "--udp-port", udp, "--no-browser", terminal=None)
        self.check("the exit status of a second copy", 1, run.wait())
        message = console.hub_silent(http)
        self.model.alerts.append([b"-e", console.alert_script(message).encode()])
        self.check("the output of a second copy", console.TITLE, run.output)
        self.check("the messages of a second copy", message + "\n", run.errors.decode())
        run.close()
        self.suite.runs.remove(run)

    def kill_left(self):
        """Ends what a killed launcher leaves running."""
        for process in self.suite.processes():
            os.kill(process.pid, SIGKILL)
        wait_until(lambda: not self.suite.processes(), "the end of what was left")


def _remove_last(items, item):
    del items[len(items) - 1 - items[::-1].index(item)]
