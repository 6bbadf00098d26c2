"""The installed launcher under a process supervisor: runit's, which knows only the launcher."""

import os
import shlex
import subprocess
from signal import SIGKILL, SIGTERM

import psutil
import pytest
from components import STOP_ORDER
from console import READY, STOPPED
from deadline import DEADLINE, wait_until

pytestmark = pytest.mark.linux


class Service:
    """A supervised `tandrel`. Its output is in the file "output". Each of its ends is a line in the file
    "ends": the exit status, -1 after a signal, and the signal's number."""

    def __init__(self, folder, environment, *arguments):
        self.folder = folder / "service"
        self.folder.mkdir()
        self.output = folder / "output"
        self._ends = folder / "ends"
        command = shlex.join(["tandrel", *arguments])
        # As in the units: with a display there would be an icon.
        display = "env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM"
        self._script("run", f"exec {display} {command} >../output 2>&1 </dev/null")
        self._script("finish", 'echo "$1 $2" >>../ends')
        self.supervisor = subprocess.Popen(
            ["runsv", self.folder], env=environment, start_new_session=True
        )

    def _script(self, name, command):
        (self.folder / name).write_text(f"#!/bin/sh\n{command}\n")
        (self.folder / name).chmod(0o755)

    def ends(self):
        text = self._ends.read_text() if self._ends.exists() else ""
        return text.splitlines()

    def wait_for_end(self, count=1):
        wait_until(lambda: len(self.ends()) >= count, f"end {count} of the service")
        return self.ends()[count - 1]

    def control(self, command):
        """Gives the supervisor a command and waits until it has been carried out."""
        command = ["sv", "-w", str(int(DEADLINE)), command, self.folder]
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)

    def close(self):
        if self.supervisor.poll() is None:
            self.control("exit")
        self.supervisor.wait(DEADLINE)


@pytest.fixture
def supervised(tree):
    """Starts `tandrel` with arguments under a supervisor."""
    tree.record()
    made = []

    def start(*arguments):
        made.append(Service(tree.home, tree.environment, *arguments))
        return made[-1]

    yield start
    for service in made:
        service.close()


def process_of(tree, name):
    """The process of a component, waited for."""
    path = f"{tree.programs}/td_{name}"

    def find():
        rows = psutil.process_iter(["cmdline"])  # None if the process has ended
        found = [row.pid for row in rows if (row.info["cmdline"] or [])[:1] == [path]]
        return found[0] if len(found) == 1 else None

    return wait_until(find, f"the process of the {name}")


def test_the_suite_is_stopped_in_order_and_with_status_0(tree, supervised):
    service = supervised(*tree.ports_options)
    wait_until(lambda: service.output.exists() and READY in service.output.read_text(), "the suite")
    tree.wait_for_starts()
    service.control("down")
    assert service.wait_for_end() == "0 0"
    assert tree.events("stop") == STOP_ORDER
    assert service.output.read_bytes().endswith(STOPPED)


def test_a_suite_without_a_hub_has_failed_and_is_started_again(tree, supervised):
    (tree.programs / "td_hub").rename(tree.programs / "td_hub.away")
    service = supervised(*tree.ports_options)
    assert service.wait_for_end() == "1 0"
    (tree.programs / "td_hub.away").rename(tree.programs / "td_hub")
    wait_until(lambda: READY in service.output.read_text(), "the suite")
    tree.wait_for_starts()


def test_a_component_ends_with_its_launcher(tree, supervised):
    service = supervised("sender", "--hub", "127.0.0.1:1")
    tree.wait_for_starts("sender")
    service.control("down")
    assert service.wait_for_end() == f"-1 {int(SIGTERM)}"
    wait_until(lambda: not tree.processes(), "the end of the sender")
    assert tree.events("stop") == ["td_sender"]


def test_the_service_has_the_components_status_and_is_started_again(tree, supervised):
    (tree.programs / "td_align").write_text("#!/bin/sh\nexit 7\n")
    service = supervised("align")
    assert service.wait_for_end() == "7 0"
    assert service.wait_for_end(2) == "7 0"


def test_a_component_that_was_killed_has_failed(tree, supervised):
    service = supervised("sender", "--hub", "127.0.0.1:1")
    tree.wait_for_starts("sender")
    os.kill(process_of(tree, "sender"), SIGKILL)
    assert service.wait_for_end() == "1 0"
    wait_until(lambda: tree.events("start") == ["td_sender"] * 2, "the second start")
