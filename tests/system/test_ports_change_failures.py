"""A change of ports that fails: the message, and which components run afterwards."""

import time

import console
import hub_scripts
import probe_tools
import pytest
import system
from component_events import SECOND, arguments_of_start, kill, starts, stops
from components import COMPONENTS, STOP_ORDER, client_arguments, hub_arguments
from console import RESTARTING
from deadline import DEADLINE, wait_until
from interface import start_interface
from other_servers import answering_server, datagram_port, silent_server
from suite import NEVER

RANGE = "Ports must be between 1 and 65535."
SAME = "The dashboard and control ports must be different."
PRIVILEGED = "Ports below 1024 need administrator privileges; pick higher ones."
NO_HUB = "Could not restart the hub."
INVALID = [
    (0, 5000, RANGE),
    (5000, 0, RANGE),
    (-1, 5000, RANGE),
    (5000, -1, RANGE),
    (65536, 5000, RANGE),
    (5000, 65536, RANGE),
    (70000, 70000, RANGE),
    (0, 0, RANGE),
    (5000, 5000, SAME),
    (80, 80, SAME),
    (80, 4466, PRIVILEGED),
    (4466, 80, PRIVILEGED),
    (1023, 5000, PRIVILEGED),
    (5000, 1023, PRIVILEGED),
    (1, 65535, PRIVILEGED),
]
SAVED = '{"http_port": 5001, "udp_port": 5000, "open_browser": false}'


def would_not_start(port):
    return f"The hub would not start on port {port}. That port may be in use. Pick another."


def set_ports_in_100_probes(interface, http, udp):
    """Like `set_ports`, with enough time for 100 probes on a busy machine."""
    interface.send("set_ports", http, udp)
    wait_until(lambda: interface.has_answered(0), "the end of the change", deadline=4 * DEADLINE)
    answer = interface.receive()
    return answer["result"], answer["message"]


def check_only_arguments_changed(suite, interface, http, udp):
    """Checks that a failed change kept the old ports, and that a later start gets the new ones."""
    assert interface.ports() == (suite.http, suite.udp)
    assert suite.settings.read_text() == SAVED
    assert "receiver" not in interface.running() and "sender" not in interface.running()
    assert stops(suite)[:3] == STOP_ORDER
    for name in ("receiver", "sender"):
        assert len(starts(suite, name)) == 1
        interface.ask("start", name)
        assert arguments_of_start(suite, name, 2) == client_arguments(udp)


def test_invalid_ports_are_refused(suite):
    suite.save_settings(SAVED)
    interface = start_interface(suite)
    for http, udp, message in INVALID:
        assert interface.set_ports(http, udp) == (False, message), (http, udp)
    assert interface.running() == COMPONENTS
    assert len(suite.events()) == 3
    assert interface.ports() == (suite.http, suite.udp)
    assert suite.settings.read_text() == SAVED
    # The lowest and highest valid ports fail only because there is no hub.
    suite.component("hub").unlink()
    for ports in ((1024, 65535), (65535, 1024)):
        assert interface.set_ports(*ports) == (False, NO_HUB)
    assert interface.quit() == 0


def test_a_change_without_a_hub_fails(suite):
    suite.save_settings(SAVED)
    interface = start_interface(suite)
    suite.component("hub").rename(suite.folder / "elsewhere")
    http, udp = suite.ports.free(), suite.ports.free()
    assert interface.set_ports(http, udp) == (False, NO_HUB)
    (suite.folder / "elsewhere").rename(suite.component("hub"))
    assert interface.running() == []
    check_only_arguments_changed(suite, interface, http, udp)
    interface.ask("start", "hub")
    assert arguments_of_start(suite, "hub", 2) == hub_arguments(http, udp)
    assert interface.quit() == 0
    assert interface.errors == b""


@pytest.mark.parametrize("behaviour", ["exit-at-once", "exit-after=500 never-answer status=0"])
def test_a_change_to_a_hub_that_exits_fails(suite, behaviour):
    suite.save_settings(SAVED)
    interface = start_interface(suite)
    suite.set_behaviour("hub", f"{behaviour} record=events.jsonl")
    http, udp = suite.ports.free(), suite.ports.free()
    assert interface.set_ports(http, udp) == (False, would_not_start(http))
    assert interface.running() == []
    assert system.is_gone(starts(suite, "hub")[1]["pid"])
    check_only_arguments_changed(suite, interface, http, udp)
    # It is not restarted, and the next change can succeed.
    suite.set_behaviour("hub", "record=events.jsonl")
    assert interface.set_ports(suite.http, suite.udp) == (True, "untouched")
    assert len(starts(suite, "hub")) == 3
    assert interface.quit() == 0
    assert interface.errors == b""


@pytest.mark.parametrize("server", [answering_server, silent_server])
def test_a_change_to_a_dashboard_port_in_use_fails(suite, server):
    """Even if the port's owner answers as a hub does."""
    suite.save_settings(SAVED)
    interface = start_interface(suite)
    probe_tools.probe_after_hub_exit(suite, count=2)
    http, udp = suite.ports.free(), suite.ports.free()
    with server(http):
        assert interface.set_ports(http, udp) == (False, would_not_start(http))
        assert interface.running() == []
        check_only_arguments_changed(suite, interface, http, udp)
    assert interface.quit() == 0


def test_another_programs_answers_do_not_count_until_the_hub_has_failed(suite):
    suite.save_settings(SAVED)
    interface = start_interface(suite)
    hub_scripts.hold_hub(suite)
    probe_tools.record_statuses(suite)
    http, udp = suite.ports.free(), suite.ports.free()
    with answering_server(http):
        interface.send("set_ports", http, udp)
        probe_tools.wait_for_statuses(suite, "0", 15, lambda: interface.has_answered(0))
        assert not interface.has_answered(0)
        hub_scripts.release(suite)
        assert interface.receive() == {"result": False, "message": would_not_start(http)}
        assert interface.running() == []
        check_only_arguments_changed(suite, interface, http, udp)
    assert len(hub_scripts.held_starts(suite)) == 1
    assert interface.quit() == 0
    assert interface.errors == b""


@pytest.mark.one_build
def test_another_programs_answers_do_not_count_while_the_hub_keeps_running(suite):
    suite.save_settings(SAVED)
    interface = start_interface(suite)
    suite.set_behaviour("hub", f"answer-after={NEVER} record=events.jsonl")
    probe_tools.record_statuses(suite)
    http, udp = suite.ports.free(), suite.ports.free()
    with answering_server(http):
        assert set_ports_in_100_probes(interface, http, udp) == (False, would_not_start(http))
    assert probe_tools.statuses(suite) == ["0"] * 100
    assert interface.running() == ["hub"]
    check_only_arguments_changed(suite, interface, http, udp)
    assert len(starts(suite, "hub")) == 2
    assert interface.quit() == 0
    assert interface.errors == b""


@pytest.mark.one_build
def test_a_probe_whose_end_cannot_be_seen_counts_as_failed(suite):
    """If SIGCHLD is ignored, as a toolkit may do, the kernel reaps the probes."""
    suite.save_settings(SAVED)
    interface = start_interface(suite)
    for name in reversed(COMPONENTS):
        interface.ask("stop", name)
    suite.set_behaviour("hub", f"answer-after={NEVER} record=events.jsonl")
    http, udp = suite.ports.free(), suite.ports.free()
    interface.ask("ignore_sigchld", 1)
    assert set_ports_in_100_probes(interface, http, udp) == (False, would_not_start(http))
    interface.ask("ignore_sigchld", 0)
    assert interface.ports() == (suite.http, suite.udp)
    assert suite.settings.read_text() == SAVED
    assert interface.running() == ["hub"]
    assert interface.quit() == 0
    assert interface.errors == b""


def test_a_change_to_a_control_port_in_use_fails(suite):
    suite.save_settings(SAVED)
    interface = start_interface(suite)
    http, udp = suite.ports.free(), suite.ports.free()
    with datagram_port(udp):
        assert interface.set_ports(http, udp) == (False, would_not_start(http))
        assert interface.running() == []
        check_only_arguments_changed(suite, interface, http, udp)
    assert interface.quit() == 0


@pytest.mark.one_build
def test_a_hub_that_never_answers_is_probed_100_times_and_left_running(suite):
    suite.save_settings(SAVED)
    interface = start_interface(suite)
    probe_tools.record_and_fail(suite)
    http, udp = suite.ports.free(), suite.ports.free()
    asked = time.monotonic_ns()
    assert set_ports_in_100_probes(interface, http, udp) == (False, would_not_start(http))
    assert time.monotonic_ns() - asked >= 10 * SECOND
    assert suite.calls("curl") == [console.probe_arguments(http)] * 100
    assert interface.running() == ["hub"]
    check_only_arguments_changed(suite, interface, http, udp)
    kill(suite, "hub")  # it is still supervised
    assert arguments_of_start(suite, "hub", 3) == hub_arguments(http, udp)
    assert interface.quit() == 0
    assert interface.errors.decode() == RESTARTING.format("hub")
