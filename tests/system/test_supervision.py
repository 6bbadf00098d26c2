"""A component that exits is started again, five times; its sixth exit leaves it stopped."""

from signal import SIGTERM

import console
import pytest
from history import (
    LEFT_STOPPED,
    NOT_RESTARTED,
    RESTARTING,
    SECOND,
    BlockedErrors,
    exits,
    given_up,
    is_gone,
    kill,
    see_two_passes,
    starts,
    stops,
    wait_for_start,
)
from suite import wait_until

PAUSE = SECOND // 2
FIRST_LOOK = 2 * SECOND // 5


@pytest.mark.parametrize(
    "name, behaviour",
    [
        ("receiver", "exit-at-once"),  # with status 0
        # Living on for longer than it takes to look does not win restarts back.
        ("sender", "exit-after=700 signal=11"),
    ],
)
def test_a_component_is_restarted_five_times(suite, name, behaviour):
    suite.behave(name, behaviour)
    suite.record()
    run = suite.start_up("--no-browser")
    run.wait_for(LEFT_STOPPED.format(name), "errors")
    see_two_passes(suite)
    others = ["td_receiver", "td_sender", "td_hub"]
    others.remove(f"td_{name}")
    assert run.stop() == 0
    assert run.errors.decode() == given_up(name) + RESTARTING.format("hub") * 2
    assert run.output.endswith(console.STOPPED)
    assert stops(suite) == sorted(others, reverse=True)
    assert len(starts(suite, name)) == len(exits(suite, name)) == 6
    for end, start in zip(exits(suite, name), starts(suite, name)[1:]):
        assert start["time_ns"] - end["time_ns"] >= PAUSE


@pytest.mark.parametrize("contents", ["", "#!/no/such/interpreter\n"])
def test_a_program_that_cannot_be_executed_is_one_that_exits(suite, contents):
    suite.script("td_receiver", contents)
    suite.record("sender", "hub")
    run = suite.start_up("--no-browser")
    wait_for_start(suite, "sender")
    run.wait_for(LEFT_STOPPED.format("receiver"), "errors")
    assert run.stop() == 0
    assert run.errors.decode() == given_up("receiver")
    assert stops(suite) == ["td_sender", "td_hub"]


def test_a_hub_that_keeps_exiting_ends_the_run(suite):
    suite.record()
    run = suite.start_up("--no-browser")
    wait_for_start(suite, "sender")
    wait_for_start(suite, "receiver")
    suite.behave("hub", "exit-at-once status=1 record=events.jsonl")
    kill(suite, "hub")
    assert run.wait() == 0
    assert run.errors.decode() == given_up("hub")
    assert run.output.endswith(console.STOPPED)
    assert len(starts(suite, "hub")) == 6
    assert stops(suite) == ["td_sender", "td_receiver"]


def test_a_restarted_component_gets_the_same_arguments(suite):
    suite.record()
    run = suite.start_up("--no-browser")
    for name in ("hub", "receiver", "sender"):
        wait_for_start(suite, name)
        kill(suite, name)
        wait_for_start(suite, name, 2)
    assert run.stop() == 0
    assert run.errors.decode() == "".join(map(RESTARTING.format, ("hub", "receiver", "sender")))
    for name in ("hub", "receiver", "sender"):
        before, after = starts(suite, name)
        for fact in ("argv", "stdio", "descriptors", "ignored", "blocked"):
            assert before[fact] == after[fact]
        assert before["argv"][0] == str(suite.component(name))
        assert after["sid"] == after["pgid"] == after["pid"]


def test_the_first_look_comes_after_a_pause(suite):
    suite.behave("receiver", "exit-at-once")
    suite.record()
    run = suite.start_up("--no-browser")
    restart = wait_for_start(suite, "receiver", 2)
    run.stop()
    # The supervisor starts its work later than the hub.
    assert restart["time_ns"] - starts(suite, "hub")[0]["time_ns"] >= FIRST_LOOK + PAUSE


@pytest.mark.parametrize("name", ["receiver", "sender"])
def test_a_component_whose_file_has_gone_is_not_tried_again(suite, name):
    suite.record()
    run = suite.start_up("--no-browser")
    wait_for_start(suite, name)
    suite.component(name).rename(suite.folder / "elsewhere")
    kill(suite, name)
    run.wait_for(NOT_RESTARTED.format(name), "errors")
    (suite.folder / "elsewhere").rename(suite.component(name))
    see_two_passes(suite)
    assert run.stop() == 0
    said = RESTARTING.format(name) + NOT_RESTARTED.format(name) + RESTARTING.format("hub") * 2
    assert run.errors.decode() == said
    assert len(starts(suite, name)) == 1


def test_a_hub_whose_file_has_gone_leaves_the_others_running(suite):
    suite.record()
    run = suite.start_up("--no-browser")
    wait_for_start(suite, "receiver")
    wait_for_start(suite, "sender")
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
    see_two_passes(suite)
    assert run.stop() == 0
    assert run.errors.decode() == RESTARTING.format("hub") * 2
    assert starts(suite, name) == []


def test_a_component_that_could_not_be_started_is_left_alone(suite):
    suite.record()
    suite.component("sender").rename(suite.folder / "elsewhere")
    run = suite.start_up("--no-browser")
    (suite.folder / "elsewhere").rename(suite.component("sender"))
    see_two_passes(suite)
    assert run.stop() == 0
    path = suite.component("sender")
    message = f"Tandrel: could not start the sender ({path})\n"
    assert run.errors.decode() == message + RESTARTING.format("hub") * 2
    assert starts(suite, "sender") == []


def test_components_are_looked_at_in_start_order(suite):
    errors = BlockedErrors()
    suite.record()
    run = suite.start_up("--no-browser", stderr=errors.writing)
    wait_for_start(suite, "sender")
    wait_for_start(suite, "receiver")
    hub = kill(suite, "hub")
    wait_until(lambda: is_gone(hub), "the supervisor to find the hub")
    kill(suite, "sender")
    kill(suite, "receiver")
    errors.release()
    wait_for_start(suite, "sender", 2)
    assert run.stop() == 0
    assert errors.text() == "".join(map(RESTARTING.format, ("hub", "receiver", "sender")))


def test_the_end_of_the_run_ends_a_look_at_the_components(suite):
    errors = BlockedErrors()
    suite.record()
    run = suite.start_up("--no-browser", stderr=errors.writing)
    wait_for_start(suite, "sender")
    receiver = wait_for_start(suite, "receiver")["pid"]
    kill(suite, "receiver")
    wait_until(lambda: is_gone(receiver), "the supervisor to find the receiver")
    kill(suite, "sender")
    run.signal(SIGTERM)
    errors.release()
    assert run.wait() == 0
    # A restart that was under way by then is finished; what comes after the receiver is not looked at.
    assert errors.text() in ("", RESTARTING.format("receiver"))
    assert len(starts(suite, "sender")) == 1
    assert run.output.endswith(console.STOPPED)
