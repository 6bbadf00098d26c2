"""The programs are hardened against attacks."""

import subprocess

import pytest
from installed import PROGRAMS

pytestmark = pytest.mark.linux


def read(path, *what):
    return subprocess.check_output(["readelf", "--wide", *what, path], text=True)


@pytest.mark.parametrize("name", [*PROGRAMS, "tdgui.so"])
def test_programs_are_hardened(build, name):
    path = build / name
    assert "Type:                              DYN" in read(path, "--file-header")  # position-independent
    assert "GNU_RELRO" in read(path, "--program-headers")
    assert "BIND_NOW" in read(path, "--dynamic")
    imported = read(path, "--dyn-syms")
    assert "__stack_chk_fail@" in imported
    assert "_chk@" in imported  # a checked call of the C library
