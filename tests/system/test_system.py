"""The modules for the systems: on Linux, the Mac's must give the same answers as Linux's."""

import os
import signal
import subprocess

import pytest
import system
import system_linux
import system_macos
from deadline import wait_until
from suite import Ports

pytestmark = pytest.mark.one_build


@pytest.fixture(params=system.WORKING, ids=lambda module: module.__name__)
def module(request):
    return request.param


@pytest.fixture
def process():
    """A process that is waiting for input."""
    with subprocess.Popen(["cat"], stdin=subprocess.PIPE) as started:
        yield started


def states(module, pid):
    return module.is_gone(pid), module.has_ended(pid), module.is_suspended(pid)


def test_the_states_of_a_process(module, process):
    wait_until(lambda: module.is_waiting(process.pid), "the process to wait")
    assert states(module, process.pid) == (False, False, False)
    process.send_signal(signal.SIGSTOP)
    wait_until(lambda: module.is_suspended(process.pid), "the suspension")
    assert states(module, process.pid) == (False, False, True)
    assert not module.is_waiting(process.pid)
    process.kill()
    wait_until(lambda: module.has_ended(process.pid), "the end")
    assert states(module, process.pid) == (False, True, False)
    process.wait()
    assert states(module, process.pid) == (True, True, False)
    assert not module.is_waiting(process.pid)


def test_the_shell_command_that_recognises_a_zombie(module, process):
    def is_zombie():
        command = f"pid={process.pid}; {module.IS_ZOMBIE}"
        return subprocess.run(["sh", "-c", command], stderr=subprocess.DEVNULL).returncode == 0

    assert not is_zombie()
    process.kill()
    wait_until(lambda: module.has_ended(process.pid), "the end")
    assert is_zombie()
    process.wait()
    assert not is_zombie()


def test_the_descriptors_of_a_process(tmp_path):
    with open(tmp_path / "file", "w") as file, open(os.devnull) as null:
        opened = system.descriptors(os.getpid())
        assert opened[file.fileno()] == os.path.realpath(file.name)
        assert opened[null.fileno()] == os.devnull
    assert os.path.realpath(file.name) not in system.descriptors(os.getpid()).values()


def test_the_descriptors_that_lsof_lists():
    listing = "p5121\nf0\nn/dev/null\nf1\nn->0x8a2e\nf2\nf10\nn/tmp/with\\nline feed\n"
    assert system_macos.descriptors_of(listing) == {
        0: "/dev/null",
        1: "",
        2: "",
        10: "/tmp/with\\nline feed",
    }


def test_needs_skips_a_test_with_the_reason(monkeypatch):
    monkeypatch.setattr(system, "_here", system_macos)
    (skipped,) = system.needs("end with parent", "alert tools").args
    assert skipped
    reasons = [system_macos.MISSING[name] for name in ("end with parent", "alert tools")]
    assert system.needs("end with parent", "alert tools").kwargs["reason"] == "; ".join(reasons)
    monkeypatch.setattr(system, "_here", system_linux)
    assert system.needs("end with parent").args == (False,)
    with pytest.raises(AssertionError):
        system.needs("no such ability")


def test_no_two_tests_get_the_same_port():
    ports = Ports()
    others = Ports()
    first = {ports.free() for _ in range(300)}
    second = {others.free() for _ in range(300)}
    assert len(first) == len(second) == 300
    assert not first & second
    ports.close()
    others.close()
