"""The settings file: it is read at start-up, and only a regular file is read or written.

tests/unit/settings_test.cpp tests how each text is read.
"""

import os

import pytest
from components import COMPONENTS
from interface import start_interface
from scripted_hub import DEFAULT_PORTS
from run_settings import settings_of_run, settings_text, settings_without_options

DEFAULTS = (*DEFAULT_PORTS, True)


@pytest.mark.parametrize(
    "text, expected",
    [
        (settings_text(5000, 5001, False).encode(), ("5000", "5001", False)),
        (b"", DEFAULTS),
        (b'"http_port": 0, "udp_port": 5001', ("4466", "5001", True)),
        (b'\xff "open_browser" no JSON :falsehood \xff', ("4466", "4465", False)),
        (b" " * 495 + b'"http_port": 5000', ("500", "4465", True)),  # 511 bytes are read
        (b'"http_port": 50\0' + b'00, "udp_port": 5001', ("50", "4465", True)),
    ],
    ids=["all settings", "empty", "one default", "no JSON", "too long", "NUL"],
)
def test_the_file_is_read_and_not_changed(suite, text, expected):
    suite.save_settings(text)
    before = suite.settings.stat().st_mtime_ns
    assert settings_without_options(suite) == expected
    assert (suite.settings.read_bytes(), suite.settings.stat().st_mtime_ns) == (text, before)


def test_without_a_file_the_defaults_hold_and_none_is_made(suite):
    assert settings_without_options(suite) == DEFAULTS
    assert list(suite.settings.parent.iterdir()) == []


def test_a_folder_named_like_the_file_counts_as_no_file(suite):
    suite.settings.mkdir(parents=True)
    assert settings_without_options(suite) == DEFAULTS


def test_options_are_not_saved(suite):
    saved = settings_text(suite.http, suite.udp, True)
    suite.save_settings(saved)
    before = suite.settings.stat().st_mtime_ns
    http, udp = suite.ports.free(), suite.ports.free()
    options = ["--http-port", http, "--udp-port", udp, "--no-browser", "--verbose"]
    assert settings_of_run(suite, *options) == (str(http), str(udp), False)
    assert suite.settings.read_text() == saved
    assert suite.settings.stat().st_mtime_ns == before
    assert settings_of_run(suite) == (str(suite.http), str(suite.udp), True)


def make_fifo(path):
    os.mkfifo(path)


def link_to_null(path):
    path.symlink_to("/dev/null")


def link_to_fifo(path):
    os.mkfifo(path.with_name("fifo"))
    path.symlink_to("fifo")


def kind_and_identity(path):
    """The types and inodes of `path` and of the file that it may link to."""
    entries = path.lstat(), path.stat()
    return [(entry.st_mode, entry.st_dev, entry.st_ino) for entry in entries]


@pytest.mark.parametrize("make", [make_fifo, link_to_fifo, link_to_null])
def test_a_file_that_is_not_regular_counts_as_no_file(suite, make):
    suite.settings.parent.mkdir()
    make(suite.settings)
    before = kind_and_identity(suite.settings)
    assert settings_without_options(suite) == DEFAULTS
    assert kind_and_identity(suite.settings) == before


@pytest.mark.parametrize("make", [make_fifo, link_to_fifo, link_to_null])
def test_nothing_is_saved_to_a_file_that_is_not_regular(suite, make):
    suite.settings.parent.mkdir()
    make(suite.settings)
    before = kind_and_identity(suite.settings)
    interface = start_interface(suite)
    reader = os.open(suite.settings, os.O_RDONLY | os.O_NONBLOCK)
    interface.ask("set_pref", 0)
    assert os.read(reader, 1) == b""
    os.close(reader)
    interface.ask("set_pref", 1)  # now without a reader
    http, udp = suite.ports.free(), suite.ports.free()
    assert interface.set_ports(http, udp) == (True, "untouched")
    assert interface.ports() == (http, udp)
    assert interface.ask("pref") is True
    assert interface.running() == COMPONENTS
    assert kind_and_identity(suite.settings) == before
    assert interface.quit() == 0
    assert interface.errors == b""
