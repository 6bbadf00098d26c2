"""Starting, stopping and restarting components from the menu, and how that changes supervision."""

import shutil
import time

import pytest
import system
from blocked_stderr import BlockedStderr
from component_events import (
    KILL_DELAY,
    SECOND,
    kill,
    kill_until_reaped,
    starts,
    stops,
    wait_for_start,
    wait_for_supervisor_pass,
)
from components import COMPONENTS, STOP_ORDER
from console import (
    LEFT_STOPPED,
    NOT_RESTARTED,
    NOT_STARTED,
    RESTARTING,
    VERSION,
    restarts_until_left_stopped,
)
from deadline import wait_until
from interface import start_interface
from run_settings import settings_text

NO_COMPONENTS = ["", "align", "HUB", "Hub", "hu", "hub ", " hub", "td_hub", "hubs"]


def test_the_configuration_given_to_the_interface(suite):
    interface = start_interface(suite)
    config = interface.ask("config")
    assert config["url"].startswith("http://")
    interface.wait_for(f"  Dashboard  : \x1b[1;36m{config['url']}\x1b[0m\n")
    assert config["url"].endswith(f":{suite.http}/")
    assert config["status"] == f"Tandrel {VERSION}"
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


def test_components_left_out_are_listed_and_can_be_started(suite):
    interface = start_interface(suite, "--no-receiver", "--no-sender")
    assert [row["name"] for row in interface.ask("config")["components"]] == COMPONENTS
    assert interface.running() == ["hub"]
    for name in ("sender", "receiver"):
        interface.ask("start", name)
        wait_for_start(suite, name)
    assert interface.running() == COMPONENTS
    for name in ("sender", "receiver"):  # they are supervised now
        kill(suite, name)
        wait_for_start(suite, name, 2)
    assert interface.quit() == 0
    assert stops(suite) == STOP_ORDER


def test_an_unknown_name_does_nothing(suite):
    interface = start_interface(suite)
    for name in NO_COMPONENTS:
        assert interface.ask("is_running", name) is False
        for command in ("start", "stop", "restart"):
            interface.ask(command, name)
    assert interface.running() == COMPONENTS
    assert len(suite.events()) == 3
    assert interface.quit() == 0
    assert interface.errors == b""


def test_starting_a_running_component_does_nothing(suite):
    interface = start_interface(suite)
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
def test_a_component_stopped_from_the_menu_stays_stopped(suite, name, watched):
    interface = start_interface(suite)
    interface.ask("stop", name)
    assert system.is_gone(starts(suite, name)[0]["pid"])
    assert interface.running() == [other for other in COMPONENTS if other != name]
    assert stops(suite) == [f"td_{name}"]
    wait_for_supervisor_pass(suite, watched)
    interface.ask("stop", name)  # it is stopped already
    assert len(starts(suite, name)) == 1
    # Started from the menu, it is supervised again.
    interface.ask("start", name)
    wait_for_start(suite, name, 2)
    kill(suite, name)
    wait_for_start(suite, name, 3)
    assert starts(suite, name)[2]["argv"] == starts(suite, name)[0]["argv"]
    assert interface.quit() == 0
    messages = RESTARTING.format(watched) * 2 + RESTARTING.format(name)
    assert interface.errors.decode() == messages


@pytest.mark.parametrize("name", COMPONENTS)
def test_a_restart_from_the_menu(suite, name):
    interface = start_interface(suite)
    interface.ask("restart", name)
    assert system.is_gone(starts(suite, name)[0]["pid"])
    wait_for_start(suite, name, 2)
    interface.ask("stop", name)
    interface.ask("restart", name)  # starts a stopped component
    wait_for_start(suite, name, 3)
    assert interface.running() == COMPONENTS
    assert stops(suite) == [f"td_{name}"] * 2
    kill(suite, name)  # it is supervised
    wait_for_start(suite, name, 4)
    assert interface.quit() == 0
    assert interface.errors.decode() == RESTARTING.format(name)


@pytest.mark.parametrize("command, message", [("start", NOT_STARTED), ("restart", NOT_RESTARTED)])
def test_a_failed_start_from_the_menu_is_reported(suite, command, message):
    interface = start_interface(suite)
    for name in COMPONENTS:
        suite.component(name).unlink()
        interface.ask("stop", name)
        interface.ask(command, name)
        assert interface.running() == COMPONENTS[COMPONENTS.index(name) + 1 :]
    assert interface.quit() == 0
    assert interface.errors.decode() == "".join(map(message.format, COMPONENTS))


def test_a_failed_restart_from_the_menu_has_stopped_the_component(suite):
    interface = start_interface(suite)
    suite.component("sender").chmod(0o644)
    interface.ask("restart", "sender")
    suite.component("sender").chmod(0o755)
    assert interface.running() == ["hub", "receiver"]
    assert stops(suite) == ["td_sender"]
    interface.ask("start", "sender")
    wait_for_start(suite, "sender", 2)
    assert interface.quit() == 0
    assert interface.errors.decode() == NOT_RESTARTED.format("sender")


def test_a_start_from_the_menu_resets_the_count_of_restarts(suite):
    interface = start_interface(suite)
    suite.set_behaviour("receiver", "exit-at-once record=events.jsonl")
    kill(suite, "receiver")
    interface.wait_for(LEFT_STOPPED.format("receiver"), "errors")
    assert interface.running() == ["hub", "sender"]
    interface.ask("start", "receiver")
    interface.wait_for(LEFT_STOPPED.format("receiver"), "errors", count=2)
    assert interface.quit() == 0
    assert interface.errors.decode() == restarts_until_left_stopped("receiver") * 2
    assert len(starts(suite, "receiver")) == 12


def test_a_restart_from_the_menu_resets_the_count_of_restarts(suite):
    interface = start_interface(suite)
    kill(suite, "sender")
    wait_for_start(suite, "sender", 2)
    interface.ask("restart", "sender")
    wait_for_start(suite, "sender", 3)
    suite.set_behaviour("sender", "exit-at-once record=events.jsonl")
    kill(suite, "sender")
    interface.wait_for(LEFT_STOPPED.format("sender"), "errors")
    assert interface.quit() == 0
    messages = RESTARTING.format("sender") + restarts_until_left_stopped("sender")
    assert interface.errors.decode() == messages


def test_a_hub_that_keeps_exiting_leaves_the_interface_up(suite):
    interface = start_interface(suite)
    threads = interface.threads()
    suite.set_behaviour("hub", "exit-at-once status=1 record=events.jsonl")
    kill(suite, "hub")
    interface.wait_for(LEFT_STOPPED.format("hub"), "errors")
    wait_until(lambda: interface.threads() < threads, "the supervisor's end")
    assert interface.running() == ["receiver", "sender"]

    suite.set_behaviour("hub", "record=events.jsonl")
    interface.ask("start", "hub")
    wait_for_start(suite, "hub", 7)
    # Supervision has ended: an exit goes unnoticed until the component is restarted from the menu.
    kill(suite, "receiver")
    assert interface.running() == COMPONENTS
    interface.ask("restart", "receiver")
    wait_for_start(suite, "receiver", 2)
    interface.ask("stop", "sender")
    assert interface.running() == ["hub", "receiver"]
    assert interface.quit() == 0
    assert interface.errors.decode() == restarts_until_left_stopped("hub")


def test_a_stop_right_after_a_start_is_not_lost(suite):
    """Even if the signal comes before the new process executes the component."""
    interface = start_interface(suite)
    rounds = 10
    begin = time.monotonic_ns()
    for _ in range(rounds):  # without waiting for answers
        interface.send("restart", "sender")
        interface.send("stop", "sender")
    for _ in range(2 * rounds):
        interface.receive()
    # If a signal were lost, SIGKILL would come only after the delay; a stop takes a tenth of a second.
    assert time.monotonic_ns() - begin < KILL_DELAY
    assert interface.running() == ["hub", "receiver"]
    assert interface.quit() == 0


def test_an_operation_waits_for_a_restart_in_progress(suite):
    errors = BlockedStderr()
    interface = start_interface(suite, stderr=errors.writing)
    kill_until_reaped(suite, "sender")
    interface.send("is_running", "sender")
    assert not interface.has_answered(0.3)
    errors.release()
    assert interface.receive()["result"] is True
    wait_for_start(suite, "sender", 2)
    assert interface.quit() == 0
    assert errors.text() == RESTARTING.format("sender")


def test_the_supervisor_waits_for_an_operation(suite):
    suite.set_behaviour("sender", "ignore-sigterm")
    interface = start_interface(suite)
    asked = time.monotonic_ns()
    interface.send("stop", "sender")
    wait_until(lambda: suite.events("ignored"), "the sender to get its signal")
    kill(suite, "receiver")
    restart = wait_for_start(suite, "receiver", 2)
    interface.receive()
    assert restart["time_ns"] - asked >= KILL_DELAY + SECOND // 2
    assert system.is_gone(starts(suite, "sender")[0]["pid"])
    assert interface.running() == ["hub", "receiver"]
    assert interface.quit() == 0
    assert interface.errors.decode() == RESTARTING.format("receiver")


def test_the_preference_is_saved_with_the_current_ports(suite):
    interface = start_interface(suite)
    assert interface.ask("pref") is True  # --no-browser is for one run
    assert not suite.settings.exists()
    for value in (0, 1, 1):
        shutil.rmtree(suite.settings.parent)  # it is made again each time
        interface.ask("set_pref", value)
        assert interface.ask("pref") is bool(value)
        assert suite.settings.read_text() == settings_text(suite.http, suite.udp, value)
    assert interface.quit() == 0


def test_the_saved_preference_is_what_the_interface_sees(suite):
    suite.save_settings('{"open_browser": false}')
    interface = start_interface(suite, "--browser")
    assert interface.ask("pref") is False
    assert interface.ports() == (suite.http, suite.udp)
    assert interface.quit() == 0
    assert suite.settings.read_text() == '{"open_browser": false}'
