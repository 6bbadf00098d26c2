"""A change of ports that fails: what the user is told, and what goes on."""

import shutil
import time

import pytest
from foreign import answering_server, datagram_port, silent_server
from history import RESTARTING, SECOND, is_gone, kill, starts, stops
from interface import COMPONENTS, arguments_of_start, client_arguments, hub_arguments, start_up

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


def check_nothing_but_arguments_changed(suite, interface, http, udp):
    """After a failed change to those ports: what goes on, and what a later start is given."""
    assert interface.ports() == (suite.http, suite.udp)
    assert suite.settings.read_text() == SAVED
    assert "receiver" not in interface.running() and "sender" not in interface.running()
    assert stops(suite)[:3] == ["td_sender", "td_receiver", "td_hub"]
    for name in ("receiver", "sender"):
        assert len(starts(suite, name)) == 1
        interface.ask("start", name)
        assert arguments_of_start(suite, name, 2) == client_arguments(udp)


def test_ports_that_cannot_be_are_refused(suite):
    suite.save_settings(SAVED)
    interface = start_up(suite)
    for http, udp, message in INVALID:
        assert interface.set_ports(http, udp) == (False, message), (http, udp)
    assert interface.running() == COMPONENTS
    assert len(suite.events()) == 3
    assert interface.ports() == (suite.http, suite.udp)
    assert suite.settings.read_text() == SAVED
    # The outermost ports that pass: what stops them is only that there is no hub to start.
    suite.component("hub").unlink()
    for ports in ((1024, 65535), (65535, 1024)):
        assert interface.set_ports(*ports) == (False, NO_HUB)
    assert interface.quit() == 0


def test_a_change_without_a_hub_fails(suite):
    suite.save_settings(SAVED)
    interface = start_up(suite)
    suite.component("hub").rename(suite.folder / "elsewhere")
    http, udp = suite.ports.free(), suite.ports.free()
    assert interface.set_ports(http, udp) == (False, NO_HUB)
    (suite.folder / "elsewhere").rename(suite.component("hub"))
    assert interface.running() == []
    check_nothing_but_arguments_changed(suite, interface, http, udp)
    interface.ask("start", "hub")
    assert arguments_of_start(suite, "hub", 2) == hub_arguments(http, udp)
    assert interface.quit() == 0
    assert interface.errors == b""


@pytest.mark.parametrize("behaviour", ["exit-at-once", "exit-after=500 never-answer status=0"])
def test_a_change_to_a_hub_that_exits_fails(suite, behaviour):
    suite.save_settings(SAVED)
    interface = start_up(suite)
    suite.behave("hub", f"{behaviour} record=events.jsonl")
    http, udp = suite.ports.free(), suite.ports.free()
    assert interface.set_ports(http, udp) == (False, would_not_start(http))
    assert interface.running() == []
    assert is_gone(starts(suite, "hub")[1]["pid"])
    check_nothing_but_arguments_changed(suite, interface, http, udp)
    # Nobody restarts it, and the next change can succeed.
    suite.behave("hub", "record=events.jsonl")
    assert interface.set_ports(suite.http, suite.udp) == (True, "untouched")
    assert len(starts(suite, "hub")) == 3
    assert interface.quit() == 0
    assert interface.errors == b""


# Asks once the second hub has ended: asked before, the port's owner would be taken for it.
LATE_PROBE = """#!/bin/sh
ends() { grep '"event":"exit","program":"td_hub"' "${0%/*}/../events.jsonl"; }
until [ "$(ends | wc -l)" = 2 ]; do sleep 0.01; done
pid=$(ends | sed -n '2s/.*"pid":\\([0-9]*\\).*/\\1/p')
until [ "$(cut -d ' ' -f 3 "/proc/$pid/stat")" = Z ]; do sleep 0.01; done
"""


@pytest.mark.parametrize("server", [answering_server, silent_server])
def test_a_change_to_a_taken_dashboard_port_fails(suite, server):
    """Also when that port's owner answers as a hub does."""
    suite.save_settings(SAVED)
    interface = start_up(suite)
    suite.tool("curl", LATE_PROBE + f'exec {shutil.which("curl")} "$@"\n')
    http, udp = suite.ports.free(), suite.ports.free()
    with server(http):
        assert interface.set_ports(http, udp) == (False, would_not_start(http))
        assert interface.running() == []
        check_nothing_but_arguments_changed(suite, interface, http, udp)
    assert interface.quit() == 0


def test_a_change_to_a_taken_control_port_fails(suite):
    suite.save_settings(SAVED)
    interface = start_up(suite)
    http, udp = suite.ports.free(), suite.ports.free()
    with datagram_port(udp):
        assert interface.set_ports(http, udp) == (False, would_not_start(http))
        assert interface.running() == []
        check_nothing_but_arguments_changed(suite, interface, http, udp)
    assert interface.quit() == 0


def test_a_hub_that_never_answers_is_asked_100_times_and_left_running(suite):
    suite.save_settings(SAVED)
    interface = start_up(suite)
    suite.tool("curl", "#!/bin/sh\nprintf '%s\\0' $# \"$@\" >> \"$0.calls\"\nexit 7\n")
    http, udp = suite.ports.free(), suite.ports.free()
    asked = time.monotonic_ns()
    assert interface.set_ports(http, udp) == (False, would_not_start(http))
    assert time.monotonic_ns() - asked >= 10 * SECOND
    url = f"http://127.0.0.1:{http}/api/health".encode()
    assert suite.calls("curl") == [[b"-s", b"-m", b"2", b"-o", b"/dev/null", url]] * 100
    assert interface.running() == ["hub"]
    check_nothing_but_arguments_changed(suite, interface, http, udp)
    kill(suite, "hub")  # it is still watched
    assert arguments_of_start(suite, "hub", 3) == hub_arguments(http, udp)
    assert interface.quit() == 0
    assert interface.errors.decode() == RESTARTING.format("hub")
