"""Compares a run with its model, and reports the rule that broke."""

import os
import time

import psutil
from components import COMPONENTS
from component_events import SECOND
from deadline import DEADLINE, wait_until
from model import SAVED, SAVED_BESIDE

RESTART_PAUSE = SECOND // 2


class Comparison:
    """What World can say about its run."""

    def say(self, *words):
        self.story.append(" ".join(map(str, words)))

    def text(self, stream):
        """What the run has printed; None: both streams, to one terminal."""
        data = self.run.errors if stream == "errors" else self.run.output
        return data.decode().replace("\r\n", "\n")

    def signals(self):
        own = {row["pid"] for row in self.own()}
        rows = [row for row in self.suite.events() if row["pid"] in own]
        return [(r["event"], r["program"]) for r in rows if r["event"] in ("stop", "ignored")]

    def _printed(self):
        if self.mode in ("all", "shell"):
            yield "what the terminal shows", None
        else:
            yield "what is written to standard output", "output"
            yield "what is written to standard error", "errors"

    def _processes(self):
        """The launcher's children: their command lines, and how many are zombies."""
        lines, zombies = [], 0
        for child in psutil.Process(self.pid).children():
            try:
                if child.status() == psutil.STATUS_ZOMBIE:
                    zombies += 1
                else:
                    lines.append(child.cmdline())
            except psutil.NoSuchProcess:
                pass
        return sorted(lines), zombies

    def records(self):
        """Rules about what was recorded or written: words, what is expected, and what is so."""
        for rule, stream in self._printed():
            expected = "".join(text for to, text in self.model.printed if stream in (None, to))
            yield rule, expected, self.final_text or self.text(stream)
        for name in COMPONENTS:
            expected = [arguments for who, arguments, _ in self.model.starts if who == name]
            yield f"the starts of the {name}", expected, [r["argv"][1:] for r in self.own(name)]
        yield "which components are asked to stop, in order", self.model.signals, self.signals()
        for path in (SAVED, SAVED_BESIDE):
            file = self.suite.folder / path
            text = file.read_text() if file.is_file() else None
            yield f"the settings file {path}", [self.model.files[path]], [text]

    def state(self):
        """Rules about what is so while the run goes on."""
        components = self.model.components.values()
        running = [c for c in components if c.alive]
        lines, zombies = self._processes()
        paths = sorted([f"{self.suite.folder}/td_{c.name}", *c.arguments] for c in running)
        yield "the processes that run, with their arguments", paths, lines
        unwatched = sum(c.pid and not c.alive for c in components)
        yield "no ended component stays a zombie while it is watched", unwatched, zombies
        if self.mode == "menu":
            counted = [c.name for c in components if c.pid]
            yield "what runs according to the menu", counted, self.run.running()
            yield "the ports according to the menu", self.model.ports, self.run.ports()
            yield "the preference according to the menu", self.model.preference, self.run.ask("pref")

    def settle(self):
        """Waits until everything is as the model says."""
        end = time.monotonic() + DEADLINE
        while True:
            broken = None
            for rule, expected, got in self.records():
                if expected != got:
                    too_late = time.monotonic() > end or not _may_become(expected, got)
                    broken = broken or (rule, expected, got, too_late)
            if not broken and self.model.status is None:
                for rule, expected, got in self.state():
                    if expected != got:
                        broken = (rule, expected, got, time.monotonic() > end)
                        break
            if not broken:
                return
            *rule, too_late = broken
            if too_late:
                self.check(*rule)
            time.sleep(0.02)

    def report(self, text):
        return "\n  ".join([f"{text}\nSteps:", *self.story])

    def check(self, rule, expected, got):
        assert expected == got, self.report(f"Broken: {rule}\nexpected: {expected!r}\n but it is: {got!r}")

    def check_end(self):
        """Checks the end: nothing is left but files that a run may leave."""
        self.check("the exit status", self.model.status, self.status)
        for rule in self.records():
            self.check(*rule)
        for tool, calls in (("osascript", self.model.alerts), ("open", self.model.opened)):
            if calls:
                wait_until(lambda tool=tool: self.suite.calls(tool), f"the call of {tool}")
            self.check(f"the calls of {tool}", calls, self.suite.calls(tool))
        alive = {self.component_pid(c.name) for c in self.model.components.values() if c.alive}
        self.check("no other process is left", alive, {p.pid for p in self.suite.processes()} - self.orphans)
        extra = set(os.listdir(self.suite.folder)) - self.known_files
        self.check("no other file is left", set(), extra)
        self._check_pauses()
        if self.hub_late_ms:
            answers = self.own("hub")[0]["time_ns"] + self.hub_late_ms * 10**6
            early = [row["program"] for row in self.own() if row["program"] != "td_hub" and row["time_ns"] < answers]
            self.check("nothing is started before the hub answers", [], early)

    def _check_pauses(self):
        ended = {row["pid"]: row["time_ns"] for row in self.suite.events("exit")} | self.ended_ns
        for name in COMPONENTS:
            own = self.own(name)
            restarted = [by_supervisor for who, _, by_supervisor in self.model.starts if who == name]
            for before, after, is_restart in zip(own, own[1:], restarted[1:]):
                if is_restart and before["pid"] in ended:
                    pause = after["time_ns"] - ended[before["pid"]]
                    rule = f"the {name} is started again half a second after it has ended, or later"
                    self.check(rule, True, pause >= RESTART_PAUSE)


def _may_become(expected, got):
    """Whether later events may still make the second equal to the first."""
    return expected[: len(got)] == got if isinstance(got, (str, list)) else True
