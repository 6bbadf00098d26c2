"""The command line: help, unknown options, ports and the choice of the browser.

How each argument is read is the unit test's matter (tests/unit/command_line_test.cpp).
"""

import os

import console
import pytest
import scripted_hub
from console import READY

# The arguments, and the first one that is unknown.
UNKNOWN = [
    (["--no-sender", "--help"], "--help"),
    (["HUB"], "HUB"),
    (["--http-port"], "--http-port"),
    ([""], ""),
    (["--first", "--second"], "--first"),
    (["%s%n%d"], "%s%n%d"),
    (["it's \"quoted\"\n$(touch x)"], "it's \"quoted\"\n$(touch x)"),
    ([os.fsdecode(b"\xff\xfe")], os.fsdecode(b"\xff\xfe")),
]


@pytest.mark.parametrize("arguments", [["-h"], ["--help", "hub"]])
def test_help_prints_the_usage_and_makes_no_file(suite, arguments):
    before = sorted(suite.folder.iterdir())
    run = suite.start(*arguments)
    assert run.wait() == 0
    assert run.output == console.USAGE
    assert run.errors == b""
    assert sorted(suite.folder.iterdir()) == before


def test_the_usage_is_printed_to_its_last_line(suite):
    run = suite.start("--help")
    run.wait()
    assert run.output.count(b"\n") == 25
    assert run.output.endswith(b"also still ship.\n")


def test_the_usage_does_not_depend_on_the_program_name(suite):
    other = suite.folder / "other-name"
    os.link(suite.launcher, other)
    run = suite.start("--help", program=other)
    assert run.wait() == 0
    assert run.output == console.USAGE


@pytest.mark.parametrize("arguments, unknown", UNKNOWN)
def test_an_unknown_option_is_named_and_nothing_starts(suite, arguments, unknown):
    suite.record()
    run = suite.start(*arguments)
    assert run.wait() == 1
    assert run.errors == b"Tandrel: unknown option '" + os.fsencode(unknown) + b"'\n\n"
    assert run.output == console.USAGE
    assert suite.events() == []


@pytest.mark.parametrize(
    "arguments, http, udp",
    [
        ([], "4466", "4465"),
        (["--http-port", "1", "--udp-port", "65535"], "1", "65535"),
        (["--http-port", "dashboard"], "0", "4465"),
        (["--udp-port", "70000"], "4466", "4464"),
        (["--http-port", "-1"], "65535", "4465"),
        (["--udp-port", "hub", "--http-port", "-h"], "0", "0"),
    ],
)
def test_port_values_reach_the_hub(suite, arguments, http, udp):
    scripted_hub.make_failing(suite)
    run = suite.start(*arguments)
    assert run.wait() == 1
    assert scripted_hub.ports(suite) == (http, udp)
    assert run.output == console.TITLE
    assert run.errors == console.hub_silent(http).encode() + b"\n"


def test_an_option_used_as_a_port_value_has_no_effect(suite):
    scripted_hub.make_running(suite)
    values = ["--http-port", "--verbose", "--udp-port", "--no-sender"]
    run = suite.start("--no-receiver", "--no-browser", *values)
    run.wait_for(READY)
    assert scripted_hub.end_run(suite, run) == 0
    assert scripted_hub.ports(suite) == ("0", "0")
    assert run.output == (
        console.TITLE
        + console.announcement(console.dashboard_url(0), running="hub, sender")
        + console.STOPPED
    )


@pytest.mark.parametrize(
    "saved, arguments, opened",
    [
        (None, [], True),
        ("false", [], False),
        ("true", ["--no-browser"], False),
        ("false", ["--browser"], True),
        ("true", ["--browser", "--no-browser"], False),
    ],
)
def test_the_last_browser_option_counts_for_this_run_only(suite, saved, arguments, opened):
    scripted_hub.make_running(suite)
    text = f'{{\n  "http_port": 5000,\n  "udp_port": 5001,\n  "open_browser": {saved}\n}}\n'
    if saved:
        suite.save_settings(text)
    options = [*arguments, "--http-port", "6000", "--udp-port", "6001"]
    assert scripted_hub.settings_of_run(suite, *options) == ("6000", "6001", opened)
    if saved:
        assert suite.settings.read_text() == text
    else:
        assert not suite.settings.exists()
    assert scripted_hub.settings_of_run(suite)[2] == (saved != "false")
