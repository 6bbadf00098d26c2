"""What differs between the systems that the tests run on.

Each system has its own module; this one passes on the names of the current system's module. TD_SYSTEM=macos
selects a Mac's module on other systems.
"""

import os
import sys

import system_linux
import system_macos

_MODULES = {"linux": system_linux, "macos": system_macos}
_OWN = {"darwin": "macos"}.get(sys.platform, "linux")
_here = _MODULES[os.environ.get("TD_SYSTEM", _OWN)]

# The modules that work on this system.
WORKING = [system_macos] if _OWN == "macos" else [system_linux, system_macos]

# What some tests need and one of the systems lacks.
ABILITIES = {ability for module in _MODULES.values() for ability in module.MISSING}


def __getattr__(name):
    return getattr(_here, name)


def needs(*abilities):
    """A mark that skips tests, with the reason, if the system lacks one of these abilities."""
    import pytest  # not at the top: tests/desktop/pictures.py uses this module without pytest

    assert ABILITIES.issuperset(abilities), abilities
    reasons = [_here.MISSING[ability] for ability in abilities if ability in _here.MISSING]
    return pytest.mark.skipif(bool(reasons), reason="; ".join(reasons))
