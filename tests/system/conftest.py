"""Fixtures that every system test shares."""

import shutil
import tempfile
from pathlib import Path

import inherited_signals
import pytest
import suite as suite_module
from standins import StandIns

inherited_signals.handle_ignored()


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
    """Makes suites of a test, each in a private folder whose name the test chooses.

    Fails the test that leaves a process behind.
    """
    parent = tempfile.mkdtemp(dir=session_folder)
    made = []

    def make(name):
        folder = Path(parent, name)
        folder.mkdir()
        made.append(suite_module.Suite(folder, free_ports, session_folder))
        return made[-1]

    yield make
    left = [process for suite in made for process in suite.close()]
    shutil.rmtree(parent)
    assert not left, f"left running: {[process.pid for process in left]}"


@pytest.fixture
def suite(suite_in):
    """A private folder with the launcher and its components."""
    return suite_in("suite")


@pytest.fixture
def standins():
    """The stand-ins in a private folder, without a launcher."""
    made = StandIns()
    yield made
    made.close()
