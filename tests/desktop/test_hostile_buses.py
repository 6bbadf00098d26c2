"""Session buses that cannot be used, and one that ends during an action: the icon is there."""

import socket
import threading
import time
from contextlib import closing, suppress

import pytest
from components import COMPONENTS
from console import READY
from test_bus_loss import LONGEST_WAIT, check_works
from test_tray import FLOATING, wait_until_at

NO_BUS = {"has_bus": False}
GUID = b"0123456789abcdef" * 2


class Impostor:
    """Listens as a bus does, and answers each line that a client sends by one of `answers`."""

    def __init__(self, folder, answers, closes):
        self._answers, self._closes = answers, closes
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.bind(f"{folder}/impostor")
        self._socket.listen()
        self.address = f"unix:path={folder}/impostor"
        self._clients = []
        self.reached = threading.Event()
        self._thread = threading.Thread(target=self._run)
        self._thread.start()

    def _run(self):
        with suppress(OSError):  # by close
            while True:
                client, _ = self._socket.accept()
                self._clients.append(client)
                self.reached.set()
                for answer in self._answers:
                    if not client.recv(4096):
                        break
                    client.sendall(answer)
                if self._closes:
                    client.close()

    def close(self):
        self._socket.shutdown(socket.SHUT_RDWR)
        for client in self._clients:
            with suppress(OSError):
                client.shutdown(socket.SHUT_RDWR)
        self._thread.join()
        for each in [self._socket, *self._clients]:
            each.close()


def check_icon_floats_and_quits(desktop, address):
    desktop.change({"DBUS_SESSION_BUS_ADDRESS": address})
    desktop.suite.record(*COMPONENTS)
    run = desktop.launch(*desktop.suite.ports_options)
    run.wait_for(READY)
    start = time.monotonic()
    wait_until_at(desktop, FLOATING)
    assert time.monotonic() - start < LONGEST_WAIT
    check_works(desktop)


@pytest.mark.parametrize("desktop", [NO_BUS], indirect=True)
@pytest.mark.parametrize(
    ("answers", "closes"),
    [
        ([], False),
        ([], True),
        ([b"REJECTED EXTERNAL\r\n"] * 9, False),  # the bus of another user
        ([b"REJECTED EXTERNAL\r\n"], True),
        ([b"220 welcome\r\n\0\xff"] * 9, False),
        ([b"x" * 100_000], False),
        ([b"OK " + GUID + b"\r\n"], False),
        ([b"OK " + GUID + b"\r\n", b"AGREE_UNIX_FD\r\n", b"l\2\1\1" + b"\xff" * 200], False),
        ([b"OK " + GUID + b"\r\n", b"AGREE_UNIX_FD\r\n", b"l"], True),
    ],
    ids=[
        *["silent", "closes", "rejects", "rejects and closes", "greets", "babbles"],
        *["silent once it knows us", "sends no messages", "closes in a message"],
    ],
)
def test_what_answers_is_no_bus(desktop, answers, closes):
    with closing(Impostor(desktop.suite.folder, answers, closes)) as impostor:
        check_icon_floats_and_quits(desktop, impostor.address)
        assert impostor.reached.is_set()


@pytest.mark.parametrize("desktop", [NO_BUS], indirect=True)
@pytest.mark.parametrize(
    "address",
    [
        "unix:path={folder}/launcher",
        "unix:path={folder}",
        "unix:path={folder}/missing",
        "unix:path=" + "x" * 300,
        "unix:",
        "unix:path=",
        "tcp:host=127.0.0.1,port={port}",
        "tcp:host=127.0.0.1,port=0",
        "tcp:host=127.0.0.1",
        "unixexec:path=/bin/false",
        "nonsense:a=b",
        "nonsense",
        ";;;",
        "unix:path={folder}/missing;unix:path={folder}/launcher",
    ],
)
def test_an_address_leads_to_no_bus(desktop, address):
    with socket.socket() as bound:  # and does not listen
        bound.bind(("127.0.0.1", 0))
        port = bound.getsockname()[1]
        address = address.format(folder=desktop.suite.folder, port=port)
        check_icon_floats_and_quits(desktop, address)


def test_the_bus_ends_during_an_action(busy):
    busy.bus.end()
    assert busy.suite.processes("sender")  # still being stopped
    wait_until_at(busy, FLOATING)
    check_works(busy)
