"""Fixtures of the tests of the documents."""

import shutil
import sys
import tempfile
from pathlib import Path

import pytest

# Support modules of the other tests.
sys.path[:0] = [str(Path(__file__).parents[1] / name) for name in ("system", "install")]

import inherited_signals  # noqa: E402
from sandbox import Sandbox  # noqa: E402
from suite import Ports  # noqa: E402

inherited_signals.handle_ignored()


@pytest.fixture
def sandbox():
    """Fails the test that leaves a process behind."""
    folder = Path(tempfile.mkdtemp(prefix="td-"))  # short: the paths of sockets are limited
    ports = Ports()
    made = Sandbox(folder, ports)
    yield made
    left = made.suite.close()
    ports.close()
    shutil.rmtree(folder)
    assert not left, f"left running: {left}"
