"""Random sequences of what the world does to a run, compared with a model of the launcher.

TD_CHAOS is how many sequences there are and the seed of the first; scripts/soak sets it.
"""

import os
import shutil
import tempfile
from contextlib import contextmanager

import pytest
import sequences
import system
from suite import Ports, Suite

COUNT, FIRST = (int(word) for word in os.environ.get("TD_CHAOS", "60 1").split())


@pytest.fixture(scope="session")
def shared_folder():
    folder = tempfile.mkdtemp(prefix="tandrel-chaos-", dir=system.TEMPORARY_FOLDER)
    yield os.path.realpath(folder)
    shutil.rmtree(folder)


@contextmanager
def private_suite(shared_folder):
    """A suite in a private folder; fails if a sequence that has passed leaves a process behind."""
    folder = tempfile.mkdtemp(dir=shared_folder)
    ports = Ports()
    made = Suite(folder, ports, shared_folder)
    try:
        yield made
    finally:
        left = made.close()
        ports.close()
        shutil.rmtree(folder)
    assert not left, f"left running: {[process.pid for process in left]}"


@pytest.mark.parametrize("seed", range(FIRST, FIRST + COUNT))
def test_a_run_keeps_the_rules(shared_folder, seed):
    broken = None
    try:
        with private_suite(shared_folder) as suite:
            sequences.run_sequence(suite, seed)
    except AssertionError as error:
        broken = str(error)
    if broken:
        pytest.fail(f"{broken}\nThe same again: scripts/soak 1 {seed}", pytrace=False)
