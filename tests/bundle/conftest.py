"""Fixtures of the tests of the application bundle."""

import os
import shutil
from pathlib import Path

import pytest

ROOT = Path(__file__).parents[2]
BUILD = Path(os.environ.get("TD_BUILD_DIR", ROOT / "build" / "dev")).resolve()


@pytest.fixture(scope="session")
def root():
    """The tree's top folder."""
    return ROOT


@pytest.fixture(scope="session")
def build():
    """The build folder in which the target "app" has been made."""
    return BUILD


@pytest.fixture(scope="session")
def bundle(build):
    """The bundle as built; on Linux it holds this system's programs."""
    return build / "Tandrel.app"


@pytest.fixture
def installed(bundle, tmp_path):
    """A copy of the bundle, for tests that start its launcher."""
    return shutil.copytree(bundle, tmp_path / "Tandrel.app", symlinks=True)
