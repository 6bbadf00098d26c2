"""The command line: help, unknown options, ports and the choice of the browser.

tests/unit/command_line_test.cpp tests how each argument is read.
"""

import os

import console
import pytest
import scripted_hub
from console import READY
from run_settings import settings_of_run, settings_text

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
    values = ["--http-port", "--verbose", "--udp-port", "--no-sender"]
    # The options that follow replace those ports by ports on which a hub can answer.
    run = suite.start("--no-receiver", "--no-browser", *values, *suite.ports_options)
    run.wait_for(READY)
    assert run.stop() == 0
    assert run.output == (
        console.TITLE
        + console.announcement(console.dashboard_url(suite.http), running="hub, sender")
        + console.STOPPED
    )
    scripted_hub.make_failing(suite)
    assert scripted_hub.ports_of_failing_run(suite, *values) == ("0", "0")


@pytest.mark.parametrize(
    "saved, arguments, opened",
    [
        (None, [], True),
        (False, [], False),
        (True, ["--no-browser"], False),
        (False, ["--browser"], True),
        (True, ["--browser", "--no-browser"], False),
    ],
)
def test_the_last_browser_option_counts_for_this_run_only(suite, saved, arguments, opened):
    http, udp = suite.ports.free(), suite.ports.free()
    text = settings_text(http, udp, saved)
    if saved is not None:
        suite.save_settings(text)
    ports = (str(suite.http), str(suite.udp))
    assert settings_of_run(suite, *arguments, *suite.ports_options) == (*ports, opened)
    if saved is None:
        assert not suite.settings.exists()
        assert settings_of_run(suite, *suite.ports_options) == (*ports, True)
    else:
        assert suite.settings.read_text() == text
        assert settings_of_run(suite) == (str(http), str(udp), saved)
