"""Hubs that listen in another process than the one the launcher starts, on a shared port, or on IPv6."""

import os
import signal
import sys

import hub_scripts
import psutil
import pytest
from component_events import starts, wait_for_components, wait_for_start
from deadline import wait_until
from other_servers import answering_server

# The stand-in as a child that the script waits for. "exit" keeps the shell from executing it in its place.
AS_A_CHILD = """#!/bin/sh
{hub} "$@"
exit $?
"""
# The stand-in without its parent. {start}: a command that starts it in another session or as a grandchild.
ORPHANED = """#!/bin/sh
({start} {hub} "$@" &)
read -r _ < "$0.never"
"""
# Starts a program in a new session, as util-linux's setsid does.
NEW_SESSION = "{python} -ISc 'import os, sys; os.setsid(); os.execv(sys.argv[1], sys.argv[1:])'"
# The minimum that the launcher needs of a hub: an answer on the dashboard port. {options}: the socket's.
ANSWERING = """#!{python} -IS
import socket, sys
server = socket.create_server(("", int(sys.argv[4])), {options})
while True:
    client, _ = server.accept()
    with client:
        client.recv(65536)
        client.sendall(b"HTTP/1.1 204 No Content\\r\\nConnection: close\\r\\n\\r\\n")
"""
DUAL_STACK = "family=socket.AF_INET6, dualstack_ipv6=True"
SHARED = "reuse_port=True"


def start_as_a_child(suite):
    suite.script("td_hub", AS_A_CHILD.format(hub=hub_scripts.move_hub(suite)))


def start_as_a_grandchild(suite):
    parent = suite.script("parent", AS_A_CHILD.format(hub=hub_scripts.move_hub(suite)))
    suite.script("td_hub", AS_A_CHILD.format(hub=parent))


def start_orphaned(suite, start=""):
    os.mkfifo(suite.folder / "td_hub.never")
    suite.script("td_hub", ORPHANED.format(start=start, hub=hub_scripts.move_hub(suite)))


def start_orphaned_in_a_session(suite):
    start_orphaned(suite, NEW_SESSION.format(python=sys.executable))


def start_an_orphans_child(suite):
    start_orphaned(suite, suite.script("parent", '#!/bin/sh\n"$@"\nexit $?\n'))


def ancestors(pid):
    return [process.pid for process in psutil.Process(pid).parents()]


def end_stand_in(suite, pid):
    """Ends a stand-in that was left behind when the launcher stopped its script."""
    os.kill(pid, signal.SIGTERM)
    wait_until(lambda: suite.processes() == [], "the end of the stand-in")


@pytest.mark.parametrize("arguments", [[], ["--verbose"]])
@pytest.mark.parametrize(
    "arrange, generations",
    [
        (start_as_a_child, 1),
        (start_as_a_grandchild, 2),
        (start_orphaned, 0),
        (start_orphaned_in_a_session, 0),
        (start_an_orphans_child, 0),
    ],
)
def test_a_hub_may_listen_in_another_process(suite, arrange, generations, arguments):
    suite.record()
    arrange(suite)
    run = suite.start_up("--no-browser", *arguments)
    wait_for_components(suite)
    script = suite.process("hub").pid
    listening = wait_for_start(suite, "hub")["pid"]
    if generations:
        assert ancestors(listening)[generations - 1 : generations + 1] == [script, run.pid]
    else:
        wait_until(lambda: script not in ancestors(listening), "the stand-in to be orphaned")
    assert len(starts(suite, "hub")) == 1
    run.signal(signal.SIGTERM)
    assert run.wait_for_process() == 0
    end_stand_in(suite, listening)
    run.wait()
    assert run.errors == b""


def test_a_hub_may_listen_on_ipv6(suite):
    suite.record("receiver", "sender")
    suite.script("td_hub", ANSWERING.format(python=sys.executable, options=DUAL_STACK))
    run = suite.start_up("--no-browser")
    wait_for_start(suite, "receiver")
    wait_for_start(suite, "sender")
    assert run.stop() == 0
    assert run.errors == b""


def test_a_hub_may_share_its_port(suite):
    suite.record("receiver", "sender")
    suite.script("td_hub", ANSWERING.format(python=sys.executable, options=SHARED))
    with answering_server(suite.http, shared=True):
        run = suite.start_up("--no-browser")
        wait_for_start(suite, "receiver")
        wait_for_start(suite, "sender")
        assert run.stop() == 0
    assert run.errors == b""
