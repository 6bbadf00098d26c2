"""Two copies of the launcher on the same ports: at most one of them comes up."""

import console
import hub_scripts
import probe_tools
import pytest
from component_events import exits, start_recording, starts, wait_for_components
from components import COMPONENTS
from console import READY
from deadline import wait_until

# More probes than a hub takes to fail.
MANY = 15


def start_first_copy(suite):
    """Starts a first copy; returns it with its components' processes."""
    # The components have read their behaviour, so a test can change it for the second copy.
    first = start_recording(suite)
    processes = [suite.process(name) for name in COMPONENTS]
    return first, processes


def check_second_copy_failed(suite, run, first, processes):
    """Checks that a second copy ended with its message, and that the first one keeps running."""
    assert run.wait() == 1
    assert run.output == console.TITLE
    assert run.errors == console.hub_silent(suite.http).encode() + b"\n"
    assert [row["program"] for row in suite.events("start")[3:]] == ["td_hub"]
    assert all(process.is_running() for process in processes)
    assert first.stop() == 0
    assert first.errors == b""


@pytest.mark.parametrize("own_control_port", [False, True])
def test_a_second_copy_on_the_same_dashboard_port_fails_and_the_first_keeps_running(
    suite, own_control_port
):
    udp = suite.ports.free() if own_control_port else suite.udp
    first, processes = start_first_copy(suite)
    probe_tools.probe_after_hub_exit(suite)
    second = suite.start("--http-port", suite.http, "--udp-port", udp)
    check_second_copy_failed(suite, second, first, processes)


@pytest.mark.parametrize("behaviour", ["", "slow-answer=500"])
def test_a_second_copy_with_undelayed_probes_fails(suite, behaviour):
    suite.set_behaviour("hub", behaviour)
    first, processes = start_first_copy(suite)
    check_second_copy_failed(suite, suite.start(*suite.ports_options), first, processes)


@pytest.fixture
def copies(suite_in):
    """Two copies in separate folders, on the same ports."""
    first, second = suite_in("first"), suite_in("second")
    second.http, second.udp = first.http, first.udp
    return first, second


def check_copy_failed(suite, run):
    """Checks that a copy in a separate folder ended with its message, without a second attempt."""
    assert run.wait() == 1
    assert run.output == console.TITLE
    assert run.errors == console.hub_silent(suite.http).encode() + b"\n"
    assert starts(suite, "receiver") == starts(suite, "sender") == []
    assert [len(starts(suite, "hub")), len(exits(suite, "hub"))] == [1, 1]
    assert exits(suite, "hub")[0]["status"] == 1
    assert suite.processes() == []


@pytest.mark.parametrize("own_control_port", [False, True])
def test_answers_of_the_first_copy_do_not_count_until_the_seconds_hub_has_failed(
    copies, own_control_port
):
    first, second = copies
    if own_control_port:
        second.udp = second.ports.free()
    first_run = start_recording(first)
    processes = [first.process(name) for name in COMPONENTS]

    second.record()
    hub_scripts.hold_hub(second)
    probe_tools.record_statuses(second)
    run = second.start(*second.ports_options)
    probe_tools.wait_for_statuses(second, "0", MANY, lambda: READY.encode() in run.output)
    assert run.output == console.TITLE
    assert run.process.poll() is None
    hub_scripts.release(second)

    check_copy_failed(second, run)
    assert len(hub_scripts.held_starts(second)) == 1
    assert second.calls("open") == []
    assert all(process.is_running() for process in processes)
    assert first_run.stop() == 0
    assert first_run.errors == b""


@pytest.mark.parametrize("own_control_port", [False, True])
@pytest.mark.parametrize(
    "delays", [(0, 0), (0, 300), (300, 0), (300, 300), (0, 1500), (1500, 0), (700, 1500)]
)
def test_of_two_copies_that_start_together_one_comes_up(copies, delays, own_control_port):
    if own_control_port:
        copies[1].udp = copies[1].ports.free()
    for suite, delay in zip(copies, delays):
        suite.record()
        suite.set_behaviour("hub", f"answer-after={delay} record=events.jsonl")
    runs = [suite.start(*suite.ports_options, "--no-browser") for suite in copies]

    ended = wait_until(
        lambda: [i for i in (0, 1) if runs[i].process.poll() is not None], "the end of one copy"
    )
    assert len(ended) == 1
    loser, winner = ended[0], 1 - ended[0]
    check_copy_failed(copies[loser], runs[loser])
    runs[winner].wait_for(READY)
    wait_for_components(copies[winner])
    assert len(copies[winner].events("start")) == 3
    assert runs[winner].stop() == 0
    assert runs[winner].errors == b""


@pytest.mark.parametrize("slower", [0, 1])
def test_of_two_copies_that_start_together_the_one_with_the_slower_hub_fails(copies, slower):
    for suite in copies:
        suite.record()
    hub_scripts.hold_hub(copies[slower])
    probe_tools.record_statuses(copies[slower])
    runs = [suite.start(*suite.ports_options, "--no-browser") for suite in copies]
    faster = 1 - slower
    runs[faster].wait_for(READY)
    failing = runs[slower]
    probe_tools.wait_for_statuses(
        copies[slower], "0", MANY, lambda: READY.encode() in failing.output
    )
    assert failing.output == console.TITLE
    hub_scripts.release(copies[slower])
    check_copy_failed(copies[slower], failing)
    assert len(hub_scripts.held_starts(copies[slower])) == 1
    wait_for_components(copies[faster])
    assert runs[faster].stop() == 0
    assert runs[faster].errors == b""
