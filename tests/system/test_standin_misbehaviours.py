"""What the stand-ins do wrong when they are told to."""

import signal
import socket
import time

import psutil
import pytest
from standins_support import PROGRAMS, end
from suite import wait_until

VARIABLES = {name: "TD_STANDIN_" + name[len("td_") :].upper() for name in PROGRAMS}
ENDS = "exit-at-once and exit-after contradict each other"
NEVER = "never-answer contradicts answer-404 and slow-answer"


@pytest.mark.parametrize("name", PROGRAMS)
@pytest.mark.parametrize("by", ["file", "variable"])
def test_exit_at_once(place, name, by):
    words = "exit-at-once\n\tstatus=9 "
    if by == "file":
        place.behave(name, words)
    environment = {VARIABLES[name]: words} if by == "variable" else {}
    assert place.run(name, "--wrong", environment=environment) == (9, b"", b"")


def test_file_and_variable_count_both(place):
    place.behave("td_align", "status=3 record=events.jsonl")
    status, output, _ = place.run("td_align", environment={"TD_STANDIN_ALIGN": "exit-at-once"})
    assert (status, output) == (3, b"")
    assert [row["event"] for row in place.events()] == ["start", "exit"]


def test_another_programs_words_do_not_count(place):
    place.behave("td_hub", "exit-at-once status=9")
    assert place.run("td_align", environment={"TD_STANDIN_HUB": "status=8"})[0] == 0


def test_words_are_read_at_each_start(place):
    for status in (1, 2):
        place.behave("td_sender", f"exit-at-once status={status}")
        assert place.run("td_sender")[0] == status


@pytest.mark.parametrize("status", [0, 1, 127, 255])
def test_status_of_every_orderly_end(place, status):
    for name in PROGRAMS:
        place.behave(name, f"status={status} record={name}.jsonl")
    assert place.run("td_align")[0] == status
    for name in PROGRAMS[:3]:
        process = place.start(name)
        wait_until(lambda: place.events(f"{name}.jsonl"), "the start")
        assert end(process)[0] == status
        assert place.events(f"{name}.jsonl")[-1]["status"] == status
    assert place.run("td_hub", "--help")[0] == 0
    assert place.run("td_hub", "--wrong")[0] == 2


@pytest.mark.parametrize(
    "number", [signal.SIGKILL, signal.SIGTERM, signal.SIGSEGV, signal.SIGABRT, signal.SIGINT]
)
@pytest.mark.parametrize("name", PROGRAMS)
def test_death_by_signal(place, name, number):
    place.behave(name, f"exit-after=30 signal={int(number)} record=events.jsonl")
    process = place.start(name, cwd=place.folder)
    assert process.wait() == -number
    assert place.events()[-1]["event"] == "exit" and place.events()[-1]["signal"] == number
    assert not list(place.folder.glob("core*"))


def test_signal_that_does_not_kill_is_a_mistake(place):
    place.behave("td_align", f"exit-at-once signal={int(signal.SIGCHLD)}")
    status, _, errors = place.run("td_align")
    assert status == 70
    assert errors.decode() == f"td_align: signal {int(signal.SIGCHLD)} does not end a process\n"


@pytest.mark.parametrize("name", PROGRAMS)
def test_exit_after(place, name):
    place.behave(name, "exit-after=300 status=4 record=events.jsonl")
    status, output, _ = place.run(name)
    assert status == 4
    start, stop = place.events()
    assert 300e6 <= stop["time_ns"] - start["time_ns"] < 3e9
    assert output.startswith(b"argv[0]: ") == (name == "td_align")


@pytest.mark.parametrize("name", PROGRAMS)
def test_ignored_sigterm(place, name):
    extra = " exit-after=60000" if name == "td_align" else ""
    place.behave(name, "ignore-sigterm record=events.jsonl" + extra)
    process = place.start(name)
    place.wait_event("start")
    process.send_signal(signal.SIGTERM)
    assert place.wait_event("ignored")["signal"] == signal.SIGTERM
    assert process.poll() is None
    assert end(process, signal.SIGINT)[0] == 0
    assert [row["event"] for row in place.events()] == ["start", "ignored", "stop", "exit"]


def test_answer_after(place):
    place.behave("td_hub", "answer-after=600 record=events.jsonl")
    hub = place.start("td_hub")
    start = place.wait_event("start")["time_ns"]
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
        client.settimeout(0.05)
        client.connect(("127.0.0.1", place.udp))

        def acknowledged():
            try:
                client.send(b"td-standin register sender 1")
                return client.recv(100)
            except OSError:
                return None

        wait_until(acknowledged, "the control port")
    if time.monotonic_ns() - start < 500e6:  # a busy machine may have taken too long to tell
        assert not place.answers() or time.monotonic_ns() - start >= 600e6
    wait_until(place.answers, "the dashboard")
    assert time.monotonic_ns() - start >= 600e6
    assert hub.poll() is None and place.registered(hub) is None


def test_answer_after_on_a_taken_port_and_a_stop_before_it(place):
    with socket.create_server(("0.0.0.0", place.http)):
        place.behave("td_hub", "answer-after=100")
        status, _, errors = place.run("td_hub")
        assert status == 1 and f"dashboard port {place.http}:".encode() in errors
    place.behave("td_hub", "answer-after=60000 record=events.jsonl")
    hub = place.start("td_hub")
    place.wait_event("start")
    assert end(hub)[0] == 0


def test_slow_answer(place):
    place.behave("td_hub", "slow-answer=400")
    hub = place.start_hub()
    start = time.monotonic()
    assert place.get("/api/health")[0] == 200
    assert time.monotonic() - start >= 0.4
    with place.connect() as client:
        client.sendall(b"GET / HTTP/1.0\r\n\r\n")
        status, seconds = end(hub)
        assert status == 0 and seconds < 0.35


def test_never_answer(place):
    place.behave("td_hub", "never-answer record=events.jsonl")
    hub = place.start("td_hub")
    connections = []

    def connect():
        try:
            connections.append(place.connect())
        except ConnectionRefusedError:
            pass
        return len(connections) == 12  # more than the threads and the queue of the port together

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


def test_answer_404(place):
    place.behave("td_hub", "answer-404")
    hub = place.start("td_hub")

    def status_of(path):
        try:
            return place.get(path)[0]
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
def test_mistakes_are_told(place, name, words, message):
    place.behave(name, words)
    assert place.run(name, "--help") == (70, b"", f"{name}: {message}\n".encode())


def test_unusable_files_are_told(place):
    record = place.folder / "no" / "events.jsonl"
    status, _, errors = place.run("td_align", environment={"TD_STANDIN_ALIGN": f"record={record}"})
    assert (status, errors.decode()) == (70, f"td_align: {record}: No such file or directory\n")
    (place.folder / "td_align.behaviour").mkdir()
    status, _, errors = place.run("td_align")
    path = place.folder / "td_align.behaviour"
    assert (status, errors.decode()) == (70, f"td_align: {path}: Is a directory\n")
