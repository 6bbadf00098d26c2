"""Fixtures of the tests of the documents."""

import shutil
import sys
import tempfile
from pathlib import Path

import pytest

# The tests share the support modules of others.
sys.path[:0] = [str(Path(__file__).parents[1] / name) for name in ("system", "install")]

import inherited_signals  # noqa: E402
from place import Place  # noqa: E402
from suite import Ports  # noqa: E402

inherited_signals.handle_ignored()


@pytest.fixture
def place():
    """Fails the test that leaves a process behind."""
    folder = Path(tempfile.mkdtemp(prefix="td-"))  # short, for the names of a screen's sockets
    ports = Ports()
    made = Place(folder, ports)
    yield made
    left = made.suite.close()
    ports.close()
    shutil.rmtree(folder)
    assert not left, f"left running: {left}"
