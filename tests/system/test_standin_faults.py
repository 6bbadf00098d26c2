"""The faults that the stand-ins show on request."""

import signal
import socket
import time

import psutil
import pytest
from components import PROGRAMS
from deadline import wait_until
from standins import end

pytestmark = pytest.mark.one_build

VARIABLES = {name: "TD_STANDIN_" + name[len("td_") :].upper() for name in PROGRAMS}
ENDS = "exit-at-once and exit-after contradict each other"
NEVER = "never-answer contradicts answer-404 and slow-answer"


@pytest.mark.parametrize("name", PROGRAMS)
@pytest.mark.parametrize("by", ["file", "variable"])
def test_exit_at_once(standins, name, by):
    words = "exit-at-once\n\tstatus=9 "
    if by == "file":
        standins.set_behaviour(name, words)
    environment = {VARIABLES[name]: words} if by == "variable" else {}
    assert standins.run(name, "--wrong", environment=environment) == (9, b"", b"")


def test_file_and_variable_are_both_read(standins):
    standins.set_behaviour("td_align", "status=3 record=events.jsonl")
    status, output, _ = standins.run("td_align", environment={"TD_STANDIN_ALIGN": "exit-at-once"})
    assert (status, output) == (3, b"")
    assert [row["event"] for row in standins.events()] == ["start", "exit"]


def test_another_programs_behaviour_is_not_read(standins):
    standins.set_behaviour("td_hub", "exit-at-once status=9")
    assert standins.run("td_align", environment={"TD_STANDIN_HUB": "status=8"})[0] == 0


def test_the_behaviour_is_read_at_each_start(standins):
    for status in (1, 2):
        standins.set_behaviour("td_sender", f"exit-at-once status={status}")
        assert standins.run("td_sender")[0] == status


@pytest.mark.parametrize("status", [0, 1, 127, 255])
def test_exit_status_of_every_clean_end(standins, status):
    for name in PROGRAMS:
        standins.set_behaviour(name, f"status={status} record={name}.jsonl")
    assert standins.run("td_align")[0] == status
    for name in PROGRAMS[:3]:
        process = standins.start(name)
        wait_until(lambda: standins.events(f"{name}.jsonl"), "the start")
        assert end(process)[0] == status
        assert standins.events(f"{name}.jsonl")[-1]["status"] == status
    assert standins.run("td_hub", "--help")[0] == 0
    assert standins.run("td_hub", "--wrong")[0] == 2


@pytest.mark.parametrize(
    "number", [signal.SIGKILL, signal.SIGTERM, signal.SIGSEGV, signal.SIGABRT, signal.SIGINT]
)
@pytest.mark.parametrize("name", PROGRAMS)
def test_death_by_signal(standins, name, number):
    standins.set_behaviour(name, f"exit-after=30 signal={int(number)} record=events.jsonl")
    process = standins.start(name, cwd=standins.folder)
    assert process.wait() == -number
    assert standins.events()[-1]["event"] == "exit" and standins.events()[-1]["signal"] == number
    assert not list(standins.folder.glob("core*"))


def test_a_signal_that_does_not_kill_is_reported(standins):
    standins.set_behaviour("td_align", f"exit-at-once signal={int(signal.SIGCHLD)}")
    status, _, errors = standins.run("td_align")
    assert status == 70
    assert errors.decode() == f"td_align: signal {int(signal.SIGCHLD)} does not end a process\n"


@pytest.mark.parametrize("name", PROGRAMS)
def test_exit_after(standins, name):
    standins.set_behaviour(name, "exit-after=300 status=4 record=events.jsonl")
    status, output, _ = standins.run(name)
    assert status == 4
    start, stop = standins.events()
    assert 300e6 <= stop["time_ns"] - start["time_ns"] < 3e9
    assert output.startswith(b"argv[0]: ") == (name == "td_align")


@pytest.mark.parametrize("name", PROGRAMS)
def test_ignored_sigterm(standins, name):
    extra = " exit-after=60000" if name == "td_align" else ""
    standins.set_behaviour(name, "ignore-sigterm record=events.jsonl" + extra)
    process = standins.start(name)
    standins.wait_event("start")
    process.send_signal(signal.SIGTERM)
    assert standins.wait_event("ignored")["signal"] == signal.SIGTERM
    assert process.poll() is None
    assert end(process, signal.SIGINT)[0] == 0
    assert [row["event"] for row in standins.events()] == ["start", "ignored", "stop", "exit"]


def test_answer_after(standins):
    standins.set_behaviour("td_hub", "answer-after=600 record=events.jsonl")
    hub = standins.start("td_hub")
    start = standins.wait_event("start")["time_ns"]
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
        client.settimeout(0.05)
        client.connect(("127.0.0.1", standins.udp))

        def acknowledged():
            try:
                client.send(b"td-standin register sender 1")
                return client.recv(100)
            except OSError:
                return None

        wait_until(acknowledged, "the control port")
    if time.monotonic_ns() - start < 500e6:  # not if a busy machine took too long
        assert not standins.answers() or time.monotonic_ns() - start >= 600e6
    wait_until(standins.answers, "the dashboard")
    assert time.monotonic_ns() - start >= 600e6
    assert hub.poll() is None and standins.registered(hub) is None


def test_answer_after_on_a_taken_port_and_a_stop_before_it(standins):
    with socket.create_server(("0.0.0.0", standins.http)):
        standins.set_behaviour("td_hub", "answer-after=100")
        status, _, errors = standins.run("td_hub")
        assert status == 1 and f"dashboard port {standins.http}:".encode() in errors
    standins.set_behaviour("td_hub", "answer-after=60000 record=events.jsonl")
    hub = standins.start("td_hub")
    standins.wait_event("start")
    assert end(hub)[0] == 0


def test_slow_answer(standins):
    standins.set_behaviour("td_hub", "slow-answer=400")
    hub = standins.start_hub()
    start = time.monotonic()
    assert standins.get("/api/health")[0] == 200
    assert time.monotonic() - start >= 0.4
    with standins.connect() as client:
        client.sendall(b"GET / HTTP/1.0\r\n\r\n")
        status, seconds = end(hub)
        assert status == 0 and seconds < 0.35


def test_never_answer(standins):
    standins.set_behaviour("td_hub", "never-answer record=events.jsonl")
    hub = standins.start("td_hub")
    connections = []

    def connect():
        try:
            connections.append(standins.connect())
        except ConnectionRefusedError:
            pass
        return len(connections) == 12  # more than threads and backlog together

    wait_until(connect, "connections")
    for connection in connections:
        connection.sendall(b"GET /api/health HTTP/1.0\r\n\r\n")
        connection.settimeout(0.05)
        with pytest.raises(socket.timeout):
            connection.recv(1)
    established = [
        row for row in psutil.Process(hub.pid).connections("tcp") if row.status == "ESTABLISHED"
    ]
    assert len(established) == 12
    assert end(hub)[0] == 0
    for connection in connections:
        connection.close()


def test_answer_404(standins):
    standins.set_behaviour("td_hub", "answer-404")
    hub = standins.start("td_hub")

    def status_of(path):
        try:
            return standins.get(path)[0]
        except ConnectionRefusedError:
            return None

    assert wait_until(lambda: status_of("/api/health"), "an answer") == 404
    assert [status_of(path) for path in ("/", "/api/state", "/x")] == [404] * 3
    assert hub.poll() is None


@pytest.mark.parametrize(
    "name, words, message",
    [
        ("td_hub", "exit-at-onze", "no such misbehaviour: exit-at-onze"),
        ("td_align", "answer-404", "no such misbehaviour: answer-404"),
        ("td_sender", "never-answer", "no such misbehaviour: never-answer"),
        ("td_hub", "=", "no such misbehaviour: ="),
        ("td_hub", "exit-at-once=1", "wrong value of a misbehaviour: exit-at-once=1"),
        ("td_hub", "exit-after", "wrong value of a misbehaviour: exit-after"),
        ("td_hub", "exit-after=", "wrong value of a misbehaviour: exit-after="),
        ("td_hub", "exit-after=1s", "wrong value of a misbehaviour: exit-after=1s"),
        ("td_hub", "exit-after=-1", "wrong value of a misbehaviour: exit-after=-1"),
        ("td_hub", "answer-after=86400001", "wrong value of a misbehaviour: answer-after=86400001"),
        ("td_align", "status=256", "wrong value of a misbehaviour: status=256"),
        ("td_align", "signal=0", "wrong value of a misbehaviour: signal=0"),
        ("td_align", "signal=65", "wrong value of a misbehaviour: signal=65"),
        ("td_align", "record=", "wrong value of a misbehaviour: record="),
        ("td_align", "status=1 status=1", "misbehaviour given twice: status=1"),
        ("td_align", "status=1 signal=9", "status and signal contradict each other"),
        ("td_hub", "exit-at-once exit-after=1", ENDS),
        ("td_hub", "never-answer answer-404", NEVER),
        ("td_hub", "slow-answer=1 never-answer", NEVER),
    ],
)
def test_wrong_behaviours_are_reported(standins, name, words, message):
    standins.set_behaviour(name, words)
    assert standins.run(name, "--help") == (70, b"", f"{name}: {message}\n".encode())


def test_unusable_files_are_reported(standins):
    record = standins.folder / "no" / "events.jsonl"
    environment = {"TD_STANDIN_ALIGN": f"record={record}"}
    status, _, errors = standins.run("td_align", environment=environment)
    assert (status, errors.decode()) == (70, f"td_align: {record}: No such file or directory\n")
    (standins.folder / "td_align.behaviour").mkdir()
    status, _, errors = standins.run("td_align")
    path = standins.folder / "td_align.behaviour"
    assert (status, errors.decode()) == (70, f"td_align: {path}: Is a directory\n")
