"""Fixtures of the tests of installing."""

import os
import shutil
import sys
import tempfile
from pathlib import Path

import inherited_signals
import pytest
from installed import Tree, install
from suite import BUILD, Ports

inherited_signals.handle_ignored()

ROOT = Path(__file__).parents[2]
# What tests may need, by the name of their mark: whether it is so here, and why a test is skipped if not.
NEEDS = {
    "linux": (sys.platform == "linux", "a Mac has the application instead"),
    "root": (hasattr(os, "geteuid") and os.geteuid() == 0, "only root may do this"),
}


def pytest_configure(config):
    for name, (_, reason) in NEEDS.items():
        config.addinivalue_line("markers", f"{name}: otherwise the test is skipped: {reason}")


def pytest_runtest_setup(item):
    for name, (given, reason) in NEEDS.items():
        if item.get_closest_marker(name) and not given:
            pytest.skip(reason)


@pytest.fixture(scope="session")
def root():
    """The repository's top folder."""
    return ROOT


@pytest.fixture(scope="session")
def build():
    """The build folder with what users run."""
    return BUILD


@pytest.fixture
def folder():
    """A private folder that every user may enter, with spaces and a quote in its name."""
    made = Path(tempfile.mkdtemp(prefix="td-"))
    made.chmod(0o755)
    folder = made / "it's an empty place"
    folder.mkdir()
    yield folder
    shutil.rmtree(made)


@pytest.fixture
def ports():
    made = Ports()
    yield made
    made.close()


@pytest.fixture
def tree(build, folder, ports):
    """An installation by "cmake --install", with the stand-ins.

    Fails the test that leaves a process behind.
    """
    prefix = folder / ".local"
    install(build, prefix)
    install(build, prefix, "--component", "standins")
    made = Tree(prefix, folder / "home", ports)
    yield made
    left = made.close()
    assert not left, f"left running: {left}"
