"""A component that exits is restarted up to five times; its sixth exit leaves it stopped."""

from signal import SIGTERM

import console
import pytest
from blocked_stderr import BlockedStderr
from component_events import (
    SECOND,
    exits,
    kill,
    kill_until_reaped,
    start_recording,
    starts,
    stops,
    wait_for_start,
    wait_for_supervisor_pass,
)
from components import COMPONENTS
from console import LEFT_STOPPED, NOT_RESTARTED, RESTARTING, restarts_until_left_stopped

RESTART_DELAY = SECOND // 2
FIRST_POLL = 2 * SECOND // 5  # after the start of the supervisor


@pytest.mark.parametrize(
    "name, behaviour",
    [
        ("receiver", "exit-at-once"),  # with status 0
        # Running longer than a poll interval does not reset the count.
        ("sender", "exit-after=700 signal=11"),
    ],
)
def test_a_component_is_restarted_five_times(suite, name, behaviour):
    suite.set_behaviour(name, behaviour)
    suite.record()
    run = suite.start_up("--no-browser")
    run.wait_for(LEFT_STOPPED.format(name), "errors")
    wait_for_supervisor_pass(suite)
    others = ["td_receiver", "td_sender", "td_hub"]
    others.remove(f"td_{name}")
    assert run.stop() == 0
    assert run.errors.decode() == restarts_until_left_stopped(name) + RESTARTING.format("hub") * 2
    assert run.output.endswith(console.STOPPED)
    assert stops(suite) == sorted(others, reverse=True)
    assert len(starts(suite, name)) == len(exits(suite, name)) == 6
    for end, start in zip(exits(suite, name), starts(suite, name)[1:]):
        assert start["time_ns"] - end["time_ns"] >= RESTART_DELAY


@pytest.mark.parametrize("contents", ["", "#!/no/such/interpreter\n"])
def test_a_program_that_cannot_be_executed_counts_as_exiting(suite, contents):
    suite.script("td_receiver", contents)
    suite.record("sender", "hub")
    run = suite.start_up("--no-browser")
    wait_for_start(suite, "sender")
    run.wait_for(LEFT_STOPPED.format("receiver"), "errors")
    assert run.stop() == 0
    assert run.errors.decode() == restarts_until_left_stopped("receiver")
    assert stops(suite) == ["td_sender", "td_hub"]


def test_a_hub_that_keeps_exiting_ends_the_run(suite):
    run = start_recording(suite)
    suite.set_behaviour("hub", "exit-at-once status=1 record=events.jsonl")
    kill(suite, "hub")
    assert run.wait() == 0
    assert run.errors.decode() == restarts_until_left_stopped("hub")
    assert run.output.endswith(console.STOPPED)
    assert len(starts(suite, "hub")) == 6
    assert stops(suite) == ["td_sender", "td_receiver"]


def test_a_restarted_component_gets_the_same_arguments(suite):
    run = start_recording(suite)
    for name in COMPONENTS:
        kill(suite, name)
        wait_for_start(suite, name, 2)
    assert run.stop() == 0
    assert run.errors.decode() == "".join(map(RESTARTING.format, COMPONENTS))
    for name in COMPONENTS:
        before, after = starts(suite, name)
        for fact in ("argv", "stdio", "descriptors", "ignored", "blocked"):
            assert before[fact] == after[fact]
        assert before["argv"][0] == str(suite.component(name))
        assert after["sid"] == after["pgid"] == after["pid"]


def test_the_first_poll_comes_after_a_delay(suite):
    suite.set_behaviour("receiver", "exit-at-once")
    suite.record()
    run = suite.start_up("--no-browser")
    restart = wait_for_start(suite, "receiver", 2)
    run.stop()
    # The supervisor starts after the hub.
    assert restart["time_ns"] - starts(suite, "hub")[0]["time_ns"] >= FIRST_POLL + RESTART_DELAY


@pytest.mark.parametrize("name", ["receiver", "sender"])
def test_a_component_whose_file_is_missing_is_not_retried(suite, name):
    suite.record()
    run = suite.start_up("--no-browser")
    wait_for_start(suite, name)
    suite.component(name).rename(suite.folder / "elsewhere")
    kill(suite, name)
    run.wait_for(NOT_RESTARTED.format(name), "errors")
    (suite.folder / "elsewhere").rename(suite.component(name))
    wait_for_supervisor_pass(suite)
    assert run.stop() == 0
    messages = [RESTARTING.format(name), NOT_RESTARTED.format(name), RESTARTING.format("hub") * 2]
    assert run.errors.decode() == "".join(messages)
    assert len(starts(suite, name)) == 1


def test_a_hub_whose_file_is_missing_leaves_the_others_running(suite):
    run = start_recording(suite)
    suite.component("hub").unlink()
    kill(suite, "hub")
    run.wait_for(NOT_RESTARTED.format("hub"), "errors")
    kill(suite, "receiver")
    wait_for_start(suite, "receiver", 2)
    assert run.stop() == 0
    assert stops(suite) == ["td_sender", "td_receiver"]


@pytest.mark.parametrize("option, name", [("--no-receiver", "receiver"), ("--no-sender", "sender")])
def test_a_component_left_out_is_never_started(suite, option, name):
    suite.record()
    run = suite.start_up("--no-browser", option)
    wait_for_supervisor_pass(suite)
    assert run.stop() == 0
    assert run.errors.decode() == RESTARTING.format("hub") * 2
    assert starts(suite, name) == []


def test_a_component_that_could_not_be_started_is_not_supervised(suite):
    suite.record()
    suite.component("sender").rename(suite.folder / "elsewhere")
    run = suite.start_up("--no-browser")
    (suite.folder / "elsewhere").rename(suite.component("sender"))
    wait_for_supervisor_pass(suite)
    assert run.stop() == 0
    path = suite.component("sender")
    message = f"Tandrel: could not start the sender ({path})\n"
    assert run.errors.decode() == message + RESTARTING.format("hub") * 2
    assert starts(suite, "sender") == []


def test_components_are_polled_in_start_order(suite):
    errors = BlockedStderr()
    run = start_recording(suite, stderr=errors.writing)
    kill_until_reaped(suite, "hub")
    kill(suite, "sender")
    kill(suite, "receiver")
    errors.release()
    wait_for_start(suite, "sender", 2)
    assert run.stop() == 0
    assert errors.text() == "".join(map(RESTARTING.format, COMPONENTS))


def test_the_end_of_the_run_interrupts_a_poll_of_the_components(suite):
    errors = BlockedStderr()
    run = start_recording(suite, stderr=errors.writing)
    kill_until_reaped(suite, "receiver")
    kill(suite, "sender")
    run.signal(SIGTERM)
    errors.release()
    assert run.wait() == 0
    # A restart in progress is finished; the sender, which comes next, is not polled.
    assert errors.text() in ("", RESTARTING.format("receiver"))
    assert len(starts(suite, "sender")) == 1
    assert run.output.endswith(console.STOPPED)
