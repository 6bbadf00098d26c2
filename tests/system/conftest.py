"""Fixtures that every system test shares."""

import shutil
import signal
import tempfile
from pathlib import Path

import pytest
import suite as suite_module
from standins_support import Place

# What a nohup or a background job around the tests ignores is not to reach the programs under test:
# a handler becomes the default at their start, while "ignored" would stay.
for number in signal.valid_signals():
    if signal.getsignal(number) == signal.SIG_IGN:
        signal.signal(number, lambda *_: None)


@pytest.fixture(scope="session")
def session_folder():
    folder = tempfile.mkdtemp(prefix="tandrel-test-")
    yield folder
    shutil.rmtree(folder)


@pytest.fixture
def free_ports():
    ports = suite_module.Ports()
    yield ports
    ports.close()


@pytest.fixture
def suite_in(session_folder, free_ports):
    """Makes the one suite of a test, in a private folder whose name the test chooses.

    Fails the test that leaves a process behind.
    """
    parent = tempfile.mkdtemp(dir=session_folder)
    made = []

    def make(name):
        folder = Path(parent, name)
        folder.mkdir()
        made.append(suite_module.Suite(folder, free_ports, session_folder))
        return made[0]

    yield make
    left = [process for suite in made for process in suite.close()]
    shutil.rmtree(parent)
    assert not left, f"left running: {[process.pid for process in left]}"


@pytest.fixture
def suite(suite_in):
    """A private folder with everything in it."""
    return suite_in("suite")


@pytest.fixture
def place():
    """A private folder for a stand-in without a launcher."""
    made = Place()
    yield made
    made.close()
