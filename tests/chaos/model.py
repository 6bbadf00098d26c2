"""The launcher's rules, as a model of a run: what a run does is compared with it.

It is written from what the launcher must do, not from how it does it, and it has no times: an operation of the
model goes on until nothing changes any more. Only the order of what happens counts.
"""

import console
from components import COMPONENTS, client_arguments, hub_arguments

RESTARTS = 5
GIVEN_UP = 1000
SAVED = "config/launcher.json"
SAVED_BESIDE = "launcher.json"  # if there can be no folder for it
PRIVILEGED = "Ports below 1024 need administrator privileges; pick higher ones."


class Component:
    """A component, its program, and its process: `pid` is whether the launcher counts it as running."""

    def __init__(self, name):
        self.name = name
        self.arguments = []
        self.restarts = 0
        self.wanted = True
        self.pid = self.alive = self.frozen = self.ignores = False
        self.file = "good"  # or "gone", "not executable", "no program"
        self.behaviour = ""

    @property
    def dies_at_once(self):
        return self.file == "no program" or "exit-at-once" in self.behaviour


class Model:
    """`printed` has all output in order: its stream and text. `starts` has all starts: the component, its
    arguments, and whether the supervisor started it; `signals` what components did at SIGTERM or SIGINT."""

    def __init__(self, folder, http, udp, menu):
        self.folder, self.ports, self.menu = folder, (http, udp), menu
        self.components = {name: Component(name) for name in COMPONENTS}
        self.running = True  # whether components are supervised, and the run goes on
        self.status = None  # the exit status, once the run has ended
        self.verbose = False
        self.preference = self.opens_browser = True
        self.files = {SAVED: None, SAVED_BESIDE: None}  # texts; None: no file
        self.config_is_file = self.config_is_other = self.disk_is_full = False
        self.taken = set()  # ports that other programs have
        self.printed, self.starts, self.signals, self.alerts, self.opened = [], [], [], [], []
        self.kills = 0  # processes that did not end at SIGTERM

    def print(self, text):
        self.printed.append(("output", text.decode()))

    def complain(self, text):
        self.printed.append(("errors", text))

    def set_arguments(self):
        for c in self.components.values():
            c.arguments = client_arguments(self.new_ports[1])
        self.components["hub"].arguments = hub_arguments(*self.new_ports)

    # --- One process

    def spawn(self, c, restarted=False):
        if c.file in ("gone", "not executable"):
            return False
        c.pid, c.frozen, c.ignores = True, False, "ignore-sigterm" in c.behaviour
        c.alive = not c.dies_at_once
        if c.name == "hub" and set(map(int, c.arguments[1::2])) & self.taken:
            c.alive = False
        if c.file == "good":
            self.starts.append((c.name, c.arguments, restarted))
        return True

    def stop(self, c):
        if c.alive:
            if not c.frozen:
                self.signals.append(("ignored" if c.ignores else "stop", f"td_{c.name}"))
            self.kills += c.frozen or c.ignores
        c.pid = c.alive = c.frozen = False

    def stop_last_to_first(self):
        for c in reversed(self.components.values()):
            self.stop(c)

    # --- Start-up

    def start(self, answers=True):
        """Start-up; `answers`: whether the hub answers in time, and before a signal."""
        self.new_ports = self.ports
        self.set_arguments()
        hub, *clients = self.components.values()
        self.print(console.TITLE)
        if not self.spawn(hub):
            return self.fail(console.hub_missing(f"{self.folder}/td_hub"))
        if not (answers and hub.alive):
            return self.fail(console.hub_silent(self.ports[0]))
        for c in clients:
            if c.wanted and not self.spawn(c):
                self.complain(f"Tandrel: could not start the {c.name} ({self.folder}/td_{c.name})\n")
        url = console.dashboard_url(self.ports[0])
        wanted = ", ".join(c.name for c in self.components.values() if c.wanted)
        no_sender = not self.components["sender"].wanted
        self.print(console.announcement(url, wanted, no_sender, self.verbose))
        if self.opens_browser:
            self.opened.append([url.encode()])
        self.supervise()

    def fail(self, message):
        self.complain(message + "\n")
        self.alerts.append([b"-e", console.alert_script(message).encode()])
        for c in self.components.values():
            self.stop(c)
        self.status = 1

    # --- Supervision

    def unnoticed(self):
        """The components whose end the supervisor should notice."""
        components = self.components.values()
        return [c for c in components if self.running and c.wanted and c.pid and not c.alive]

    def supervise(self, first="hub"):
        """Passes of the supervisor, until one changes nothing. The first one begins at component `first`."""
        names = list(self.components)
        for name in names[names.index(first) :]:
            self.visit(self.components[name])
        changed = True
        while self.running and changed:
            changed = any([self.visit(c) for c in self.components.values()])
        if not self.running and not self.menu and self.status is None:
            self.end()

    def visit(self, c):
        if c not in self.unnoticed():
            return False
        c.pid = False
        if c.restarts < RESTARTS:
            c.restarts += 1
            self.complain(console.RESTARTING.format(c.name))
            if not self.spawn(c, restarted=True):
                self.complain(console.NOT_RESTARTED.format(c.name))
        else:
            self.complain(console.LEFT_STOPPED.format(c.name))
            c.restarts = GIVEN_UP
            self.running = self.running and c.name != "hub"
        return True

    def exits(self, *names):
        """Processes end by themselves."""
        for name in names:
            self.components[name].alive = self.components[name].frozen = False

    # --- The menu's operations

    def control_start(self, name):
        c = self.components.get(name)
        if c and not c.pid:
            c.wanted, c.restarts = True, 0
            if not self.spawn(c):
                self.complain(console.NOT_STARTED.format(name))

    def control_stop(self, name):
        c = self.components.get(name)
        if c:
            c.wanted = False
            self.stop(c)

    def control_restart(self, name):
        c = self.components.get(name)
        if c:
            self.stop(c)
            c.wanted, c.restarts = True, 0
            if not self.spawn(c):
                self.complain(console.NOT_RESTARTED.format(name))

    def set_ports(self, http, udp):
        """The result, and the message ("untouched" if there is none)."""
        if not (1 <= http <= 65535 and 1 <= udp <= 65535):
            return False, "Ports must be between 1 and 65535."
        if http == udp:
            return False, "The dashboard and control ports must be different."
        if min(http, udp) < 1024:
            return False, PRIVILEGED
        self.stop_last_to_first()
        self.new_ports = http, udp
        self.set_arguments()
        for c in self.components.values():
            c.restarts = 0
        hub, *clients = self.components.values()
        if not self.spawn(hub):
            return False, "Could not restart the hub."
        if not hub.alive:
            hub.pid = False
            busy = "That port may be in use. Pick another."
            return False, f"The hub would not start on port {http}. {busy}"
        for c in clients:
            if c.wanted:
                self.spawn(c)
        self.ports = http, udp
        self.save()
        return True, "untouched"

    def set_preference(self, on):
        self.preference = on
        self.save()

    def save(self):
        if self.config_is_other:
            return
        value = "true" if self.preference else "false"
        text = '{\n  "http_port": %d,\n  "udp_port": %d,\n  "open_browser": %s\n}\n' % (*self.ports, value)
        path = SAVED_BESIDE if self.config_is_file else SAVED
        self.files[path] = "" if self.disk_is_full else text

    # --- The end

    def end(self, status=0):
        self.running = False
        self.print(b"\nTandrel: stopping...\n")
        self.stop_last_to_first()
        self.print(b"Tandrel: stopped.\n")
        self.status = status
