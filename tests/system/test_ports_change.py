"""Changing the ports of a running suite."""

from signal import SIGTERM

from component_events import (
    SECOND,
    arguments_of_start,
    kill,
    starts,
    stops,
    wait_for_start,
    wait_for_supervisor_pass,
)
from components import COMPONENTS, STOP_ORDER, client_arguments, hub_arguments
from console import RESTARTING, restarts_until_left_stopped
from interface import start_interface
from run_settings import settings_text

SAVED = '{"open_browser": false}'


def test_a_change_that_succeeds(suite):
    suite.save_settings(SAVED)
    interface = start_interface(suite)
    url = interface.ask("config")["url"]
    http, udp = suite.ports.free(), suite.ports.free()
    assert interface.set_ports(http, udp) == (True, "untouched")
    assert interface.ports() == (http, udp)
    assert interface.running() == COMPONENTS
    assert suite.settings.read_text() == settings_text(http, udp, False)
    assert stops(suite) == STOP_ORDER
    assert arguments_of_start(suite, "hub", 2) == hub_arguments(http, udp)
    for name in ("receiver", "sender"):
        assert arguments_of_start(suite, name, 2) == client_arguments(udp)
        assert starts(suite, name)[1]["time_ns"] > starts(suite, "hub")[1]["time_ns"]
    assert interface.ask("config")["url"] == url
    # A restart uses the new ports.
    for name in COMPONENTS:
        kill(suite, name)
        assert arguments_of_start(suite, name, 3) == starts(suite, name)[1]["argv"][1:]
    assert interface.quit() == 0
    assert interface.errors.decode() == "".join(map(RESTARTING.format, COMPONENTS))


def test_the_same_ports_restart_everything(suite):
    interface = start_interface(suite)
    assert interface.set_ports(suite.http, suite.udp) == (True, "untouched")
    assert [len(starts(suite, "hub")), len(stops(suite))] == [2, 3]
    assert interface.quit() == 0


def test_the_two_ports_can_be_swapped(suite):
    interface = start_interface(suite)
    assert interface.set_ports(suite.udp, suite.http) == (True, "untouched")
    assert interface.ports() == (suite.udp, suite.http)
    assert interface.quit() == 0


def test_what_was_stopped_from_the_menu_stays_stopped(suite):
    interface = start_interface(suite, "--no-sender")
    interface.ask("stop", "receiver")
    http, udp = suite.ports.free(), suite.ports.free()
    assert interface.set_ports(http, udp)[0]
    assert interface.running() == ["hub"]
    wait_for_supervisor_pass(suite)
    assert len(starts(suite, "receiver")) == 1 and not starts(suite, "sender")
    for name, count in (("receiver", 2), ("sender", 1)):
        interface.ask("start", name)
        assert arguments_of_start(suite, name, count) == client_arguments(udp)
    assert interface.quit() == 0


def test_a_hub_stopped_from_the_menu_is_started_but_not_supervised(suite):
    interface = start_interface(suite)
    interface.ask("stop", "hub")
    http, udp = suite.ports.free(), suite.ports.free()
    assert interface.set_ports(http, udp)[0]
    assert interface.running() == COMPONENTS
    wait_for_start(suite, "hub", 2)
    interface.ask("start", "hub")  # it runs already, and is still not supervised
    kill(suite, "hub")
    wait_for_start(suite, "receiver", 2)
    wait_for_supervisor_pass(suite, "receiver")
    assert len(starts(suite, "hub")) == 2
    # Restarted from the menu, it is supervised again.
    interface.ask("restart", "hub")
    wait_for_start(suite, "hub", 3)
    kill(suite, "hub")
    wait_for_start(suite, "hub", 4)
    assert interface.quit() == 0
    assert interface.errors.decode() == RESTARTING.format("receiver") * 2 + RESTARTING.format("hub")


def test_a_change_resets_the_count_of_restarts(suite):
    interface = start_interface(suite)
    kill(suite, "receiver")
    wait_for_start(suite, "receiver", 2)
    suite.set_behaviour("receiver", "exit-at-once record=events.jsonl")
    assert interface.set_ports(suite.ports.free(), suite.ports.free())[0]
    interface.wait_for("leaving it stopped", "errors")
    assert interface.quit() == 0
    messages = RESTARTING.format("receiver") + restarts_until_left_stopped("receiver")
    assert interface.errors.decode() == messages


def test_a_change_waits_for_a_late_hub(suite):
    interface = start_interface(suite)
    suite.set_behaviour("hub", "answer-after=800 answer-404 record=events.jsonl")
    http, udp = suite.ports.free(), suite.ports.free()
    assert interface.set_ports(http, udp) == (True, "untouched")
    restarted = wait_for_start(suite, "receiver", 2)["time_ns"]
    assert restarted - starts(suite, "hub")[1]["time_ns"] >= SECOND * 4 // 5
    assert interface.quit() == 0


def test_a_client_that_cannot_be_started_does_not_fail_the_change(suite):
    interface = start_interface(suite)
    suite.component("receiver").unlink()
    http, udp = suite.ports.free(), suite.ports.free()
    assert interface.set_ports(http, udp) == (True, "untouched")
    assert interface.running() == ["hub", "sender"]
    assert interface.quit() == 0
    assert interface.errors == b""


def test_a_change_after_the_end_of_supervision_is_completed(suite):
    interface = start_interface(suite)
    interface.signal(SIGTERM)
    suite.set_behaviour("hub", "answer-after=500 record=events.jsonl")
    http, udp = suite.ports.free(), suite.ports.free()
    assert interface.set_ports(http, udp) == (True, "untouched")
    assert interface.running() == COMPONENTS
    assert interface.quit() == 0
