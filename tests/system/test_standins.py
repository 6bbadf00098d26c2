"""The stand-ins without faults."""

import json
import re
import signal
import socket
import subprocess
import time
from contextlib import closing

import psutil
import pytest
from components import PROGRAMS, hub_arguments
from deadline import DEADLINE, wait_until
from standins import Terminal, end

pytestmark = pytest.mark.one_build

SERVICES = ("td_hub", "td_receiver", "td_sender")
CLIENTS = ("td_receiver", "td_sender")
MAX_END_SECONDS = 1.0  # an end takes about a millisecond; the rest allows for a busy machine


@pytest.fixture
def terminal():
    made = Terminal()
    yield made
    made.close()


@pytest.mark.parametrize("name", PROGRAMS)
def test_help_says_that_it_is_a_stand_in(standins, name):
    status, output, errors = standins.run(name, "--help")
    assert status == 0 and errors == b""
    assert output.startswith(f"Usage: {name}".encode())
    assert b"stand-in for the suite's" in output


@pytest.mark.parametrize(
    "name, arguments, message",
    [
        ("td_hub", ["--udp-port", "9000"], "--http-port is missing"),
        ("td_hub", ["--http-port", "9000"], "--udp-port is missing"),
        ("td_hub", ["--udp-port", "-1", "--http-port", "1"], "not a port: -1"),
        ("td_hub", ["--udp-port", "9000", "--http-port", "65536"], "not a port: 65536"),
        ("td_hub", ["--udp-port", "9000", "--http-port", "80x"], "not a port: 80x"),
        ("td_hub", ["--udp-port"], "--udp-port needs a value"),
        ("td_hub", ["--loud", "1"], "unknown argument: --loud"),
        ("td_receiver", ["--hub", "127.0.0.1"], "not HOST:PORT: 127.0.0.1"),
        ("td_receiver", ["--hub", ":9000"], "not HOST:PORT: :9000"),
        ("td_receiver", ["--hub", "127.0.0.1:0"], "not HOST:PORT: 127.0.0.1:0"),
        ("td_sender", ["--hub", "127.0.0.1:x"], "not HOST:PORT: 127.0.0.1:x"),
        ("td_sender", ["extra"], "unknown argument: extra"),
    ],
)
def test_wrong_command_line(standins, name, arguments, message):
    status, output, errors = standins.run(name, *arguments)
    assert status == 2 and output == b""
    assert errors.startswith(f"{name}: {message}\nUsage: {name}".encode())


def test_align_prints_what_it_was_given(standins):
    arguments = [b"--hub", b"", b"two words", b"\xff\xfe", b"a\nb", b"--help"]
    status, output, errors = standins.run("td_align", *arguments)
    lines = [str(standins.folder / "td_align").encode(), *arguments]
    assert status == 0 and errors == b""
    assert output == b"".join(b"argv[%d]: %s\n" % pair for pair in enumerate(lines))


def test_hub_answers(standins):
    hub = standins.start_hub()
    status, body = standins.get("/api/health")
    assert status == 200
    assert json.loads(body) == {"status": "ok", "program": "td_hub", "stand_in": True}
    state = standins.state()
    assert (state["udp_port"], state["http_port"]) == (standins.udp, standins.http)
    assert state["pid"] == hub.pid and state["registrations"] == []
    assert standins.state()["uptime_ms"] >= state["uptime_ms"] >= 0
    assert standins.get("/elsewhere")[0] == 404


def test_page_says_that_it_is_a_stand_in_and_loads_nothing_from_outside(standins):
    standins.start_hub()
    status, page = standins.get("/")
    assert status == 200 and "<title>Tandrel hub</title>" in page
    assert "This is a stand-in" in page
    assert page.endswith("</html>\n")
    assets = re.findall(r"""(?:src|href)\s*=\s*["']([^"']*)|url\(([^)]*)\)|@import""", page)
    assert [link for link, _ in assets] == ["data:image/svg+xml,%3Csvg xmlns=", "/api/state"]


@pytest.mark.parametrize("taken", ["udp", "http"])
def test_a_port_in_use_ends_the_second_hub(standins, taken):
    first = standins.start_hub()
    udp = standins.udp if taken == "udp" else standins.ports.free()
    http = standins.http if taken == "http" else standins.ports.free()
    kind, port = ("control", udp) if taken == "udp" else ("dashboard", http)
    status, output, errors = standins.run("td_hub", *hub_arguments(http, udp))
    message = f"td_hub: cannot listen on {kind} port {port}: Address already in use\n"
    assert (status, output, errors.decode()) == (1, b"", message)
    assert first.poll() is None and standins.answers()


def test_port_0_is_a_free_port_that_the_system_chooses(standins):
    seen = set()
    for _ in range(2):
        with closing(Terminal()) as terminal:
            hub = start_at(standins, terminal, "td_hub", *hub_arguments(0, 0))
            terminal.wait_for("registered  up")
            shown = re.search(r":(\d+)/  udp (\d+)", terminal.text)
            standins.http, standins.udp = map(int, shown.groups())
        state = standins.state()
        assert state["pid"] == hub.pid
        assert (state["http_port"], state["udp_port"]) == (standins.http, standins.udp)
        standins.wait_registered(standins.start("td_receiver"))
        seen |= {standins.http, standins.udp}
    assert 0 not in seen and len(seen) == 4


def test_ports_are_taken_from_every_interface(standins):
    standins.start_hub()
    for kind, port in ((socket.SOCK_DGRAM, standins.udp), (socket.SOCK_STREAM, standins.http)):
        with socket.socket(socket.AF_INET, kind) as other:
            with pytest.raises(OSError):
                other.bind(("127.0.0.2", port))


def test_hub_restarts_at_once_on_its_ports(standins):
    for _ in range(5):
        hub = standins.start_hub()  # its answer leaves a connection in TIME_WAIT
        assert end(hub)[0] == 0


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
@pytest.mark.parametrize("name", SERVICES)
def test_signal_ends_at_once_without_output(standins, name, number):
    standins.set_behaviour(name, "record=events.jsonl")
    process = standins.start_hub() if name == "td_hub" else standins.start(name)
    standins.wait_event("start")
    status, seconds = end(process, number)
    assert status == 0 and seconds < MAX_END_SECONDS
    assert (process.stdout.read(), process.stderr.read()) == (b"", b"")


def test_slow_clients_do_not_delay_the_hubs_end(standins):
    hub = standins.start_hub()
    clients = [standins.connect() for _ in range(6)]
    for client in clients:
        client.sendall(b"GET /api/health HTTP/1.1\r\nHost: x\r\n")
    status, seconds = end(hub)
    for client in clients:
        client.close()
    assert status == 0 and seconds < MAX_END_SECONDS


@pytest.mark.parametrize("name", CLIENTS)
def test_registration(standins, name):
    standins.start_hub()
    before = time.time() * 1000
    process = standins.start(name)
    entry = standins.wait_registered(process)
    assert entry["role"] == name[len("td_") :]
    assert re.fullmatch(r"127\.0\.0\.1:\d+", entry["address"])
    assert before - 1 <= entry["since_unix_ms"] <= time.time() * 1000
    later = wait_until(
        lambda: (now := standins.registered(process)) and now["registered_ms"] > 2500 and now,
        "renewal",
    )
    assert later["renewed_ms_ago"] < 2500 and later["since_unix_ms"] == entry["since_unix_ms"]


def test_clean_end_is_unregistered_at_once_and_a_killed_program_after_a_timeout(standins):
    standins.start_hub()
    clean, killed = standins.start("td_receiver"), standins.start("td_sender")
    standins.wait_registered(clean)
    standins.wait_registered(killed)
    killed.kill()
    killed.wait()
    end(clean)
    wait_until(lambda: not standins.registered(clean), "the clean end to be known")
    last = standins.registered(killed)
    assert last
    expiry = time.monotonic() + 3.0 - last["renewed_ms_ago"] / 1000
    wait_until(lambda: not standins.registered(killed), "expiry")
    assert expiry - 0.1 < time.monotonic() < expiry + 2.0


def test_clients_survive_the_hub(standins):
    clients = [standins.start(name) for name in CLIENTS]  # before there is a hub
    for _ in range(2):
        hub = standins.start_hub()
        for client in clients:
            standins.wait_registered(client)
        hub.kill()
        hub.wait()
    assert [client.poll() for client in clients] == [None, None]


def test_hub_registers_valid_announcements_up_to_a_limit(standins):
    standins.start_hub()
    junk = [b"", b"\0" * 300, b"register sender 1", b"td-standin register hub 1"]
    junk += [b"td-standin register sender " + pid for pid in (b"", b"0", b"1x", b"1 2")]
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as crowd:
        crowd.connect(("127.0.0.1", standins.udp))
        crowd.settimeout(DEADLINE)
        for datagram in junk:
            crowd.send(datagram)
        for pid in range(1, 65):
            crowd.send(b"td-standin register sender %d" % pid)
            assert crowd.recv(100) == b"td-standin acknowledged"
        crowd.send(b"td-standin register sender 65")
        crowd.send(b"td-standin leave sender 1")
        crowd.send(b"td-standin register sender 66")
        assert crowd.recv(100) == b"td-standin acknowledged"
    assert [entry["pid"] for entry in standins.state()["registrations"]] == [*range(2, 65), 66]


def start_at(standins, terminal, name, *arguments):
    return standins.start(name, *arguments, stdout=terminal.slave)


def test_status_lines_at_a_terminal(standins, terminal):
    client = start_at(standins, terminal, "td_receiver")
    address = f"127.0.0.1:{standins.udp}"
    terminal.wait_for(f"\r\x1b[Ktd_receiver (stand-in)  looking for the hub at {address}")
    hub = start_at(standins, terminal, "td_hub")
    hub_line = f"td_hub (stand-in)  http://127.0.0.1:{standins.http}/  udp {standins.udp}  "
    terminal.wait_for("\r\x1b[K" + hub_line + "0 registered  up 0:00")
    terminal.wait_for(f"\r\x1b[Ktd_receiver (stand-in)  registered with {address} for 0:0")
    hub.kill()
    hub.wait()
    seen = terminal.read().count("looking for")
    wait_until(lambda: terminal.read().count("looking for") > seen, "the hub to be missed")
    assert "\n" not in terminal.read()
    assert end(client)[0] == 0
    assert terminal.read().endswith("\r\n") and terminal.text.count("\n") == 1


@pytest.mark.parametrize("columns", [12, 40])
def test_status_line_is_cut_to_the_width(standins, columns):
    with closing(Terminal(columns)) as terminal:
        start_at(standins, terminal, "td_hub")
        wait_until(lambda: terminal.read().count("\r\x1b[K") >= 2, "the line to be redrawn")
        lines = terminal.text.split("\r\x1b[K")
        assert lines[0] == "" and all(len(line) == columns - 1 for line in lines[1:])


@pytest.mark.parametrize("name", SERVICES)
def test_paused_terminal_does_not_delay_the_end(standins, terminal, name):
    process = start_at(standins, terminal, name)
    terminal.wait_for("stand-in")
    terminal.pause()
    status, seconds = end(process)
    assert status == 0 and seconds < MAX_END_SECONDS


def test_idle_programs_use_no_cpu(standins):
    def cpu_seconds(process):
        times = psutil.Process(process.pid).cpu_times()
        return times.user + times.system

    hub = standins.start_hub(stdout=subprocess.DEVNULL)
    processes = [hub, *(standins.start(name) for name in CLIENTS)]
    for client in processes[1:]:
        standins.wait_registered(client)
    before = [cpu_seconds(process) for process in processes]
    time.sleep(3)  # not a wait: this is the time measured
    assert all(cpu_seconds(p) - old < 0.03 for p, old in zip(processes, before))
