"""Random sequences of what the world does to a run, compared with a model of the launcher.

TD_CHAOS is how many sequences there are and the seed of the first; scripts/soak sets it.
"""

import os
import shutil
import tempfile

import pytest
import steps
import suite as suite_module
import system

COUNT, FIRST = (int(word) for word in os.environ.get("TD_CHAOS", "60 1").split())


@pytest.fixture(scope="session")
def shared_folder():
    folder = tempfile.mkdtemp(prefix="tandrel-chaos-", dir=system.TEMPORARY_FOLDER)
    yield os.path.realpath(folder)
    shutil.rmtree(folder)


@pytest.fixture
def suite(shared_folder):
    ports = suite_module.Ports()
    folder = tempfile.mkdtemp(dir=shared_folder)
    made = suite_module.Suite(folder, ports, shared_folder)
    yield made
    left = made.close()
    shutil.rmtree(folder)
    ports.close()
    assert not left, f"left running: {[process.pid for process in left]}"


@pytest.mark.parametrize("seed", range(FIRST, FIRST + COUNT))
def test_a_run_keeps_the_rules(suite, seed):
    __tracebackhide__ = True
    try:
        steps.run_sequence(suite, seed)
    except AssertionError as error:
        pytest.fail(f"{error}\nThe same again: scripts/soak 1 {seed}", pytrace=False)
