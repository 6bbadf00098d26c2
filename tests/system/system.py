"""What differs between the systems that the tests run on.

Each system has a module that holds all of it; this one hands out what is in the module of the
system at hand. TD_SYSTEM=macos chooses a Mac's elsewhere too, to try it without one.
"""

import os
import sys

import system_linux
import system_macos

_MODULES = {"linux": system_linux, "macos": system_macos}
_OWN = {"darwin": "macos"}.get(sys.platform, "linux")
_here = _MODULES[os.environ.get("TD_SYSTEM", _OWN)]

# The modules that work on this system, whichever is chosen.
WORKING = [system_macos] if _OWN == "macos" else [system_linux, system_macos]

# What one of the systems lacks, and some tests need.
ABILITIES = {ability for module in _MODULES.values() for ability in module.MISSING}


def __getattr__(name):
    return getattr(_here, name)


def needs(*abilities):
    """A mark for tests that are skipped, with the reason, where the system lacks one of these."""
    import pytest  # here, because what makes pictures of the interface uses this module without it

    assert ABILITIES.issuperset(abilities), abilities
    reasons = [_here.MISSING[ability] for ability in abilities if ability in _here.MISSING]
    return pytest.mark.skipif(bool(reasons), reason="; ".join(reasons))
