"""What the menu can do to the components, and what the supervisor makes of it."""

import time

import pytest
from history import (
    LEFT_STOPPED,
    NOT_RESTARTED,
    NOT_STARTED,
    RESTARTING,
    SECOND,
    BlockedErrors,
    given_up,
    is_gone,
    kill,
    see_two_passes,
    starts,
    stops,
    wait_for_start,
)
from interface import COMPONENTS, start_up
from suite import wait_until

NO_COMPONENTS = ["", "align", "HUB", "Hub", "hu", "hub ", " hub", "td_hub", "hubs"]
GRACE = 4 * SECOND  # that a component has after its SIGTERM


def test_the_record_that_the_interface_is_given(suite):
    interface = start_up(suite)
    config = interface.ask("config")
    assert config["url"].startswith("http://")
    interface.wait_for(f"  Dashboard  : \x1b[1;36m{config['url']}\x1b[0m\n")
    assert config["url"].endswith(f":{suite.http}/")
    assert config["status"] == "Tandrel 1.4.4+412"
    assert config["components"] == [
        {"name": "hub", "label": "Hub"},
        {"name": "receiver", "label": "Receiver"},
        {"name": "sender", "label": "Sender"},
    ]
    callbacks = config["callbacks"]
    assert len(callbacks) == 11
    assert [name for name, is_set in callbacks.items() if not is_set] == ["quit_fallback"]
    assert config["main_thread"]
    assert interface.quit() == 0
    assert interface.errors == b""


def test_all_rows_are_there_whatever_runs(suite):
    interface = start_up(suite, "--no-receiver", "--no-sender")
    assert [row["name"] for row in interface.ask("config")["components"]] == COMPONENTS
    assert interface.running() == ["hub"]
    for name in ("sender", "receiver"):
        interface.ask("start", name)
        wait_for_start(suite, name)
    assert interface.running() == COMPONENTS
    for name in ("sender", "receiver"):  # and they are watched from now on
        kill(suite, name)
        wait_for_start(suite, name, 2)
    assert interface.quit() == 0
    assert stops(suite) == ["td_sender", "td_receiver", "td_hub"]


def test_a_name_that_is_no_component_does_nothing(suite):
    interface = start_up(suite)
    for name in NO_COMPONENTS:
        assert interface.ask("is_running", name) is False
        for command in ("start", "stop", "restart"):
            interface.ask(command, name)
    assert interface.running() == COMPONENTS
    assert len(suite.events()) == 3
    assert interface.quit() == 0
    assert interface.errors == b""


def test_starting_a_running_component_leaves_it_alone(suite):
    interface = start_up(suite)
    for name in COMPONENTS:
        interface.ask("start", name)
    assert interface.running() == COMPONENTS
    assert [len(starts(suite, name)) for name in COMPONENTS] == [1, 1, 1]
    assert stops(suite) == []
    assert interface.quit() == 0
    assert interface.errors == b""


@pytest.mark.parametrize(
    "name, watched", [("hub", "sender"), ("receiver", "hub"), ("sender", "hub")]
)
def test_a_component_stopped_by_hand_stays_stopped(suite, name, watched):
    interface = start_up(suite)
    interface.ask("stop", name)
    assert is_gone(starts(suite, name)[0]["pid"])
    assert interface.running() == [other for other in COMPONENTS if other != name]
    assert stops(suite) == [f"td_{name}"]
    see_two_passes(suite, watched)
    interface.ask("stop", name)  # of an idle one: nothing
    assert len(starts(suite, name)) == 1
    # Started by hand, it is watched again.
    interface.ask("start", name)
    wait_for_start(suite, name, 2)
    kill(suite, name)
    wait_for_start(suite, name, 3)
    assert starts(suite, name)[2]["argv"] == starts(suite, name)[0]["argv"]
    assert interface.quit() == 0
    said = RESTARTING.format(watched) * 2 + RESTARTING.format(name)
    assert interface.errors.decode() == said


@pytest.mark.parametrize("name", COMPONENTS)
def test_restart_by_hand(suite, name):
    interface = start_up(suite)
    interface.ask("restart", name)
    assert is_gone(starts(suite, name)[0]["pid"])
    wait_for_start(suite, name, 2)
    interface.ask("stop", name)
    interface.ask("restart", name)  # of an idle one: a start
    wait_for_start(suite, name, 3)
    assert interface.running() == COMPONENTS
    assert stops(suite) == [f"td_{name}"] * 2
    kill(suite, name)  # and it is watched
    wait_for_start(suite, name, 4)
    assert interface.quit() == 0
    assert interface.errors.decode() == RESTARTING.format(name)


@pytest.mark.parametrize("command, message", [("start", NOT_STARTED), ("restart", NOT_RESTARTED)])
def test_a_start_by_hand_that_fails_is_reported(suite, command, message):
    interface = start_up(suite)
    for name in COMPONENTS:
        suite.component(name).unlink()
        interface.ask("stop", name)
        interface.ask(command, name)
        assert interface.running() == COMPONENTS[COMPONENTS.index(name) + 1 :]
    assert interface.quit() == 0
    assert interface.errors.decode() == "".join(map(message.format, COMPONENTS))


def test_a_restart_by_hand_that_fails_has_stopped_the_component(suite):
    interface = start_up(suite)
    suite.component("sender").chmod(0o644)
    interface.ask("restart", "sender")
    suite.component("sender").chmod(0o755)
    assert interface.running() == ["hub", "receiver"]
    assert stops(suite) == ["td_sender"]
    interface.ask("start", "sender")
    wait_for_start(suite, "sender", 2)
    assert interface.quit() == 0
    assert interface.errors.decode() == NOT_RESTARTED.format("sender")


def test_a_start_by_hand_gives_five_restarts_again(suite):
    interface = start_up(suite)
    suite.behave("receiver", "exit-at-once record=events.jsonl")
    kill(suite, "receiver")
    interface.wait_for(LEFT_STOPPED.format("receiver"), "errors")
    assert interface.running() == ["hub", "sender"]
    interface.ask("start", "receiver")
    interface.wait_for(LEFT_STOPPED.format("receiver"), "errors", count=2)
    assert interface.quit() == 0
    assert interface.errors.decode() == given_up("receiver") * 2
    assert len(starts(suite, "receiver")) == 12


def test_a_restart_by_hand_of_a_running_component_gives_five_restarts_again(suite):
    interface = start_up(suite)
    kill(suite, "sender")
    wait_for_start(suite, "sender", 2)
    interface.ask("restart", "sender")
    wait_for_start(suite, "sender", 3)
    suite.behave("sender", "exit-at-once record=events.jsonl")
    kill(suite, "sender")
    interface.wait_for(LEFT_STOPPED.format("sender"), "errors")
    assert interface.quit() == 0
    assert interface.errors.decode() == RESTARTING.format("sender") + given_up("sender")


def test_a_hub_that_keeps_exiting_leaves_the_interface_up(suite):
    interface = start_up(suite)
    threads = interface.threads()
    suite.behave("hub", "exit-at-once status=1 record=events.jsonl")
    kill(suite, "hub")
    interface.wait_for(LEFT_STOPPED.format("hub"), "errors")
    wait_until(lambda: interface.threads() < threads, "the supervisor's end")
    assert interface.running() == ["receiver", "sender"]

    suite.behave("hub", "record=events.jsonl")
    interface.ask("start", "hub")
    wait_for_start(suite, "hub", 7)
    # Nobody watches any more: what ends is not even noticed, until it is restarted by hand.
    kill(suite, "receiver")
    assert interface.running() == COMPONENTS
    interface.ask("restart", "receiver")
    wait_for_start(suite, "receiver", 2)
    interface.ask("stop", "sender")
    assert interface.running() == ["hub", "receiver"]
    assert interface.quit() == 0
    assert interface.errors.decode() == given_up("hub")


def test_a_stop_right_after_a_start_is_not_lost(suite):
    """Not even when its signal comes before the new process executes the component."""
    interface = start_up(suite)
    rounds = 10
    begin = time.monotonic_ns()
    for _ in range(rounds):  # without waiting for answers
        interface.send("restart", "sender")
        interface.send("stop", "sender")
    for _ in range(2 * rounds):
        interface.receive()
    # A lost signal would cost the whole grace; a stop costs a tenth of a second.
    assert time.monotonic_ns() - begin < GRACE
    assert interface.running() == ["hub", "receiver"]
    assert interface.quit() == 0


def test_an_operation_waits_for_a_restart_under_way(suite):
    errors = BlockedErrors()
    interface = start_up(suite, stderr=errors.writing)
    sender = kill(suite, "sender")
    wait_until(lambda: is_gone(sender), "the supervisor to find the sender")
    interface.send("is_running", "sender")
    assert not interface.has_answered(0.3)
    errors.release()
    assert interface.receive()["result"] is True
    wait_for_start(suite, "sender", 2)
    assert interface.quit() == 0
    assert errors.text() == RESTARTING.format("sender")


def test_the_supervisor_waits_for_an_operation(suite):
    suite.behave("sender", "ignore-sigterm")
    interface = start_up(suite)
    asked = time.monotonic_ns()
    interface.send("stop", "sender")
    wait_until(lambda: suite.events("ignored"), "the sender to get its signal")
    kill(suite, "receiver")
    restart = wait_for_start(suite, "receiver", 2)
    interface.receive()
    assert restart["time_ns"] - asked >= GRACE + SECOND // 2
    assert is_gone(starts(suite, "sender")[0]["pid"])
    assert interface.running() == ["hub", "receiver"]
    assert interface.quit() == 0
    assert interface.errors.decode() == RESTARTING.format("receiver")


def test_the_preference_is_saved_with_the_ports_in_force(suite):
    interface = start_up(suite)
    assert interface.ask("pref") is True  # --no-browser is for one run
    assert not suite.settings.exists()
    for value, text in ((0, "false"), (1, "true"), (1, "true")):
        suite.settings.unlink(missing_ok=True)
        interface.ask("set_pref", value)
        assert interface.ask("pref") is bool(value)
        assert suite.settings.read_text() == (
            f'{{\n  "http_port": {suite.http},\n  "udp_port": {suite.udp},\n'
            f'  "open_browser": {text}\n}}\n'
        )
    assert interface.quit() == 0


def test_the_saved_preference_is_what_the_interface_sees(suite):
    suite.save_settings('{"open_browser": false}')
    interface = start_up(suite, "--browser")
    assert interface.ask("pref") is False
    assert interface.ports() == (suite.http, suite.udp)
    assert interface.quit() == 0
    assert suite.settings.read_text() == '{"open_browser": false}'
