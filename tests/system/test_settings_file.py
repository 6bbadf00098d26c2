"""How the settings file is read at start-up, and that reading is all that happens to it."""

import re

import pytest
import scripted_hub
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

DEFAULTS = ("4466", "4465", True)
SAVED = '{\n  "http_port": 4466,\n  "udp_port": 4465,\n  "open_browser": true\n}\n'
OTHERS = '{\n  "http_port": 5000,\n  "udp_port": 5001,\n  "open_browser": false\n}\n'


def http(value):
    return f'{{"http_port": {value}}}'


def browser(text):
    return '{"open_browser"' + text + "}"


CASES = [
    # Whole files.
    (b"", DEFAULTS),
    ("{}", DEFAULTS),
    ("{}\n", DEFAULTS),
    (SAVED, DEFAULTS),
    (OTHERS, ("5000", "5001", False)),
    ('{"udp_port":5001,"open_browser":false,"http_port":5000}', ("5000", "5001", False)),
    ("no JSON \"http_port\" at : 5000 all", ("5000", "4465", True)),
    (b"\xff\xfe\x80\"http_port\":5000\xff", ("5000", "4465", True)),
    # Ports.
    (http(0), DEFAULTS),
    (http(-1), DEFAULTS),
    (http(1), ("1", "4465", True)),
    (http(65535), ("65535", "4465", True)),
    (http(65536), DEFAULTS),
    (http(70000), DEFAULTS),
    (http(2**32 + 5000), ("5000", "4465", True)),  # as the C library's conversion goes
    (http(10**40), DEFAULTS),
    (http(-(10**40)), DEFAULTS),
    (http('"5000"'), DEFAULTS),
    (http("5000abc"), ("5000", "4465", True)),
    (http("5000.9"), ("5000", "4465", True)),
    (http("0x1388"), DEFAULTS),
    (http("005000"), ("5000", "4465", True)),
    (http("+5000"), ("5000", "4465", True)),
    (http("+-5000"), DEFAULTS),
    (http("- 5000"), DEFAULTS),
    (http(" \t\n\v\f\r5000"), ("5000", "4465", True)),
    (http("\u00a05000"), DEFAULTS),
    (http("null"), DEFAULTS),
    ('{"http_port"}', DEFAULTS),
    ('{"http_port": }', DEFAULTS),
    ('{"http_port"', DEFAULTS),
    ('{"http_port":', DEFAULTS),
    ('{"http_port":: 5000}', DEFAULTS),
    ('{"http_port" "udp_port": 4000}', ("4000", "4000", True)),
    ('{"http_port"\n\n, "x", "udp_port" : 4000}', ("4000", "4000", True)),
    ('{"open_browser", "udp_port": false}', ("4466", "4465", False)),
    ('{"http_port": 5000, "http_port": 5001}', ("5000", "4465", True)),
    ('{"http_port": 0, "http_port": 5001}', DEFAULTS),
    ('{"note": "the "http_port" was: 5000"}', ("5000", "4465", True)),
    ('{"xhttp_port": 5000}', DEFAULTS),
    ('{"HTTP_PORT": 5000}', DEFAULTS),
    ("{http_port: 5000}", DEFAULTS),
    ("{'http_port': 5000}", DEFAULTS),
    # The preference.
    (browser(":false"), ("4466", "4465", False)),
    (browser(": false"), ("4466", "4465", False)),
    (browser(" \t:: \t:\tfalse"), ("4466", "4465", False)),
    (browser("\n:false"), ("4466", "4465", False)),
    (browser(":falsehood"), ("4466", "4465", False)),
    (browser(":\nfalse"), DEFAULTS),
    (browser(":\rfalse"), DEFAULTS),
    (browser(": False"), DEFAULTS),
    (browser(": FALSE"), DEFAULTS),
    (browser(": fals"), DEFAULTS),
    (browser(": 0"), DEFAULTS),
    (browser(": null"), DEFAULTS),
    (browser(': "false"'), DEFAULTS),
    (browser(":"), DEFAULTS),
    (browser(" false"), DEFAULTS),
    (browser(": true, \"open_browser\": false"), DEFAULTS),
    # What lies beyond the 511th byte, or a NUL, is not there.
    (b" " * 511 + OTHERS.encode(), DEFAULTS),
    (b" " * 494 + b'"http_port": 5000', ("5000", "4465", True)),
    (b" " * 495 + b'"http_port": 5000', ("500", "4465", True)),
    (b" " * 498 + b'"http_port": 5000', DEFAULTS),
    (b" " * 501 + b'"http_port": 5000', DEFAULTS),
    (b" " * 491 + b'"open_browser":false', ("4466", "4465", False)),
    (b" " * 492 + b'"open_browser":false', DEFAULTS),
    (b'"http_port": 5000' + b" " * 100_000 + b'"udp_port": 5001', ("5000", "4465", True)),
    (b"\0" + OTHERS.encode(), DEFAULTS),
    (b'"http_port": 50\0' + b'00, "udp_port": 5001', ("50", "4465", True)),
    (b'"http_port"\0: 5000', DEFAULTS),
    (b'"open_browser": \0false', DEFAULTS),
]


@pytest.mark.parametrize("part", range(4))
def test_every_file_is_read_by_the_rules(suite, part):
    scripted_hub.make_running(suite)
    for text, expected in CASES[part::4]:
        suite.save_settings(text)
        before = suite.settings.read_bytes(), suite.settings.stat().st_mtime_ns
        assert scripted_hub.settings_of_run(suite) == expected, text
        assert (suite.settings.read_bytes(), suite.settings.stat().st_mtime_ns) == before


def test_without_a_file_the_defaults_hold_and_none_is_made(suite):
    scripted_hub.make_running(suite)
    assert scripted_hub.settings_of_run(suite) == DEFAULTS
    assert list(suite.settings.parent.iterdir()) == []


def test_a_folder_in_the_files_place_counts_as_no_file(suite):
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


# The rules a second time, over bytes instead of C strings.


def rest_from_colon(text, key):
    """The text from the colon on that belongs to a key; None without the key, empty without it."""
    at = text.find(b'"' + key + b'"')
    if at < 0:
        return None
    colon = text.find(b":", at)
    return text[colon:] if colon >= 0 else b""


def port(text, key, default):
    rest = rest_from_colon(text, key)
    number = re.match(rb":[ \t\n\v\f\r]*([+-]?[0-9]+)", rest or b"")
    value = int(number[1]) if number else 0
    value = max(-(2**63), min(2**63 - 1, value))  # strtol's ends
    value = (value + 2**31) % 2**32 - 2**31  # an int of it
    return str(value if 1 <= value <= 65535 else default)


def open_browser(text):
    rest = rest_from_colon(text, b"open_browser")
    return not rest or not rest.lstrip(b"\t :").startswith(b"false")


def read_independently(data):
    text = data[:511].partition(b"\0")[0]
    return port(text, b"http_port", 4466), port(text, b"udp_port", 4465), open_browser(text)


KEYS = st.sampled_from(
    [b'"http_port"', b'"udp_port"', b'"open_browser"', b'"http_port', b"udp_port"]
)
MARKS = st.sampled_from(
    [b":", b":", b": ", b",", b"\n", b"\t", b" ", b'"', b"{", b"}", b"-", b"+"]
)
VALUES = st.one_of(
    st.integers(-70000, 140000).map(lambda number: b"%d" % number),
    st.integers(-(2**70), 2**70).map(lambda number: b"%d" % number),
    st.sampled_from([b"0", b"1", b"65535", b"65536"]),
    st.sampled_from([b"false", b"true", b"False", b"null", b'"false"']),
)
ENTRIES = st.tuples(KEYS, MARKS, MARKS | st.just(b""), VALUES).map(b"".join)
PIECES = st.one_of(
    ENTRIES, ENTRIES, KEYS, MARKS, VALUES, st.just(b"\0"), st.binary(max_size=6),
    st.integers(440, 511).map(lambda count: b" " * count),
)
FILES = st.lists(PIECES, max_size=10).map(b"".join)


@settings(
    max_examples=150,
    deadline=None,
    database=None,
    suppress_health_check=[HealthCheck.function_scoped_fixture, HealthCheck.too_slow],
)
@given(data=FILES)
def check_against_independent_reading(suite, data):
    suite.save_settings(data)
    assert scripted_hub.settings_of_run(suite) == read_independently(data)


def test_any_bytes_are_read_as_an_independent_reading_says(suite):
    scripted_hub.make_running(suite)
    check_against_independent_reading(suite)


def test_the_independent_reading_agrees_with_the_table():
    for text, expected in CASES:
        data = text if isinstance(text, bytes) else text.encode()
        assert read_independently(data) == expected, text
