"""The settings file at start-up: that it is read, and that reading does not change it.

How each text is read is the unit test's matter (tests/unit/settings_test.cpp).
"""

import pytest
import scripted_hub

DEFAULTS = (*scripted_hub.DEFAULT_PORTS, True)
SAVED = '{\n  "http_port": 4466,\n  "udp_port": 4465,\n  "open_browser": true\n}\n'
OTHERS = '{\n  "http_port": 5000,\n  "udp_port": 5001,\n  "open_browser": false\n}\n'


@pytest.mark.parametrize(
    "text, expected",
    [
        (OTHERS.encode(), ("5000", "5001", False)),
        (b"", DEFAULTS),
        (b'"http_port": 0, "udp_port": 5001', ("4466", "5001", True)),
        (b'\xff "open_browser" no JSON :falsehood \xff', ("4466", "4465", False)),
        (b" " * 495 + b'"http_port": 5000', ("500", "4465", True)),  # 511 bytes are read
        (b'"http_port": 50\0' + b'00, "udp_port": 5001', ("50", "4465", True)),
    ],
    ids=["all settings", "empty", "one default", "no JSON", "too long", "NUL"],
)
def test_the_file_is_read_and_not_changed(suite, text, expected):
    scripted_hub.make_running(suite)
    suite.save_settings(text)
    before = suite.settings.stat().st_mtime_ns
    assert scripted_hub.settings_of_run(suite) == expected
    assert (suite.settings.read_bytes(), suite.settings.stat().st_mtime_ns) == (text, before)


def test_without_a_file_the_defaults_hold_and_none_is_made(suite):
    scripted_hub.make_running(suite)
    assert scripted_hub.settings_of_run(suite) == DEFAULTS
    assert list(suite.settings.parent.iterdir()) == []


def test_a_folder_named_like_the_file_counts_as_no_file(suite):
    scripted_hub.make_running(suite)
    suite.settings.mkdir(parents=True)
    assert scripted_hub.settings_of_run(suite) == DEFAULTS


def test_options_are_not_saved(suite):
    scripted_hub.make_running(suite)
    suite.save_settings(SAVED)
    before = suite.settings.stat().st_mtime_ns
    options = ["--http-port", "5000", "--udp-port", "5001", "--no-browser", "--verbose"]
    assert scripted_hub.settings_of_run(suite, *options) == ("5000", "5001", False)
    assert suite.settings.read_text() == SAVED
    assert suite.settings.stat().st_mtime_ns == before
    assert scripted_hub.settings_of_run(suite) == DEFAULTS
