"""Fixtures of the tests of the documents."""

import shutil
import tempfile
from pathlib import Path

import inherited_signals
import pytest
from sandbox import Sandbox
from suite import Ports

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
