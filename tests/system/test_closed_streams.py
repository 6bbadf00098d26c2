"""All-in-one runs that start with closed standard streams.

No file or connection of the launcher may get the descriptor of a standard stream, and with it its output.
"""

import closed_streams
import console
import pytest
import system
from component_events import stops, wait_for_components
from components import STOP_ORDER
from interface import start_interface
from run_settings import settings_text


@pytest.fixture(params=closed_streams.COMBINATIONS, ids=str)
def closed(request):
    return request.param


def streams(run):
    """What descriptors 0, 1 and 2 of the launcher are open on."""
    opened = system.descriptors(run.pid)
    return [opened[number] for number in range(3)]


def expected_output(suite, closed):
    """The complete output of a verbose run, if standard output is open."""
    url = console.dashboard_url(suite.http)
    text = console.TITLE + console.announcement(url, verbose=True) + console.STOPPED
    return b"" if 1 in closed else text


def test_closed_streams_are_dev_null_and_the_others_are_kept(suite, closed):
    suite.record()
    options = [*suite.ports_options, "--no-browser", "--verbose"]
    program = closed_streams.program_that_closes(suite, closed)
    run = suite.start(*options, program=program, terminal=None)
    wait_for_components(suite)
    expected = closed_streams.targets(suite, run, closed, "/dev/null")
    assert streams(run) == expected
    # Verbose components share the launcher's streams.
    assert [row["stdio"] for row in suite.events("start")] == [expected] * 3
    assert [row["descriptors"] for row in suite.events("start")] == [[], [], []]
    assert run.stop() == 0
    assert run.output == expected_output(suite, closed)
    assert run.errors == b""
    assert stops(suite) == STOP_ORDER


def test_a_settings_file_saved_later_holds_only_the_settings(suite, closed):
    program = closed_streams.program_that_closes(suite, closed)
    interface = start_interface(suite, "--verbose", program=program)
    assert streams(interface) == closed_streams.targets(suite, interface, closed, "/dev/null")
    for saved in (0, 1):
        interface.ask("set_pref", saved)
        assert suite.settings.read_text() == settings_text(suite.http, suite.udp, saved)
    before = suite.settings.read_text()
    assert interface.quit() == 0
    assert suite.settings.read_text() == before
    assert interface.output == expected_output(suite, closed)
    assert interface.errors == b""
