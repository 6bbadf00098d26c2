"""The wait for the hub's first answer: late, failing and silent hubs, ports in use, signals."""

import os
import socket
import time
from signal import SIGHUP, SIGINT, SIGQUIT, SIGTERM

import console
import probe_tools
import pytest
from deadline import wait_until
from other_servers import answering_server
from suite import NEVER

# One probe of at most 2 s and a pause of 0.1 s; the rest allows for a busy machine.
ONE_PROBE = 4.0


def check_hub_wait_failed(suite, run, port=None):
    """Checks that a run reported once that its hub did not answer, and started nothing else."""
    message = console.hub_silent(suite.http if port is None else port)
    assert run.output == console.TITLE
    assert run.errors == message.encode() + b"\n"
    assert suite.calls("osascript") == [[b"-e", console.alert_script(message).encode()]]
    assert {row["program"] for row in suite.events("start")} <= {"td_hub"}
    assert suite.processes("hub") == []
    assert suite.calls("open") == []


@pytest.mark.parametrize(
    "behaviour",
    [
        "answer-after=700",
        "answer-404",
        "slow-answer=900",
        "answer-after=300 answer-404 slow-answer=300",
    ],
)
def test_any_complete_answer_counts(suite, behaviour):
    suite.set_behaviour("hub", behaviour)
    run = suite.start_up("--no-browser")
    assert run.stop() == 0
    assert run.errors == b""


@pytest.mark.parametrize(
    "behaviour",
    [
        "exit-at-once",
        "exit-at-once status=1",
        "exit-at-once signal=9",
        f"exit-after=300 answer-after={NEVER}",
        "exit-after=1000 never-answer",
    ],
)
def test_a_hub_that_exits_ends_the_wait(suite, behaviour):
    suite.set_behaviour("hub", f"{behaviour} record=events.jsonl")
    run = suite.start(*suite.ports_options)
    assert run.wait() == 1
    check_hub_wait_failed(suite, run)


@pytest.mark.parametrize("contents", ["\x7fELF but no more", "#!/nonexistent/interpreter\n"])
def test_a_hub_that_cannot_be_executed_ends_the_wait(suite, contents):
    suite.script("td_hub", contents)
    run = suite.start(*suite.ports_options)
    assert run.wait() == 1
    check_hub_wait_failed(suite, run)


@pytest.mark.one_build
def test_the_hub_is_stopped_after_100_failed_probes(suite):
    suite.record()
    probe_tools.record_and_probe(suite)
    start = time.monotonic()
    run = suite.start("--http-port", "0", "--udp-port", suite.udp)  # the hub takes another port
    assert run.wait(deadline=60) == 1
    assert time.monotonic() - start > 9.9
    assert suite.calls("curl") == [console.probe_arguments(0)] * 100
    assert [row["event"] for row in suite.events()] == ["start", "stop", "exit"]
    check_hub_wait_failed(suite, run, port=0)


def test_without_curl_the_hub_never_counts_as_ready(suite):
    environment = suite.sealed_environment()
    suite.tool("osascript")
    run = suite.start(*suite.ports_options, environment=environment)
    wait_until(lambda: answers(suite.http), "the hub")
    run.wait_for("curl: not found\n", stream="errors", count=run.errors.count(b"curl") + 2)
    suite.kill("hub")
    assert run.wait() == 1
    shell_errors, _, message = run.errors.partition(b"The hub")
    assert shell_errors.count(b"curl: not found\n") == shell_errors.count(b"\n")
    assert b"The hub" + message == console.hub_silent(suite.http).encode() + b"\n"
    assert run.output == console.TITLE


def answers(port):
    with socket.socket() as client:
        return client.connect_ex(("127.0.0.1", port)) == 0


def test_another_programs_answer_on_the_port_is_not_the_hubs(suite):
    suite.record()
    probe_tools.probe_after_hub_exit(suite)
    with answering_server(suite.http):
        run = suite.start(*suite.ports_options)
        assert run.wait() == 1
    assert suite.events("exit")[0]["status"] == 1
    check_hub_wait_failed(suite, run)


def test_a_successful_probe_of_a_dead_hub_is_ignored(suite):
    suite.set_behaviour("hub", "exit-at-once record=events.jsonl")
    probe_tools.succeed_after_hub_exit(suite)
    run = suite.start(*suite.ports_options)
    assert run.wait() == 1
    check_hub_wait_failed(suite, run)


def check_ctrl_c_ends_the_wait(suite, moment):
    """Checks that Ctrl-C after `moment` seconds ends the wait within one probe."""
    run = suite.start(*suite.ports_options, terminal="all")
    run.wait_for(console.VERSION)
    time.sleep(moment)  # not a wait: the test is about this moment
    pressed = time.monotonic()
    run.interrupt()
    assert run.wait() == 1
    assert time.monotonic() - pressed < ONE_PROBE
    assert console.hub_silent(suite.http).replace("\n", "\r\n").encode() in run.output


@pytest.mark.parametrize("moment", [step * 0.23 for step in range(11)])
def test_ctrl_c_ends_the_wait_for_a_hub_that_never_answers(suite, moment):
    suite.set_behaviour("hub", "never-answer record=events.jsonl")
    check_ctrl_c_ends_the_wait(suite, moment)
    assert [row["signal"] for row in suite.events("stop")] in ([SIGTERM], [])
    assert suite.processes("hub") == []


@pytest.mark.parametrize("moment", [step * 0.017 for step in range(12)])
def test_ctrl_c_ends_the_wait_for_a_hub_that_refuses(suite, moment):
    suite.set_behaviour("hub", f"answer-after={NEVER}")
    check_ctrl_c_ends_the_wait(suite, moment)


@pytest.mark.parametrize("number", [SIGINT, SIGTERM, SIGHUP, SIGQUIT])
@pytest.mark.parametrize("behaviour", ["never-answer", f"answer-after={NEVER}"])
def test_a_signal_to_the_launcher_alone_ends_the_wait(suite, number, behaviour):
    suite.set_behaviour("hub", f"{behaviour} record=events.jsonl")
    run = suite.start(*suite.ports_options)
    wait_until(lambda: suite.events("start"), "the hub's start")
    sent = time.monotonic()
    assert run.stop(number) == 1
    assert time.monotonic() - sent < ONE_PROBE
    check_hub_wait_failed(suite, run)


def test_the_hub_is_stopped_after_the_alert_is_dismissed(suite):
    suite.set_behaviour("hub", f"answer-after={NEVER} record=events.jsonl")
    suite.tool("osascript", '#!/bin/sh\necho $$ > "$0.shown"\nread -r _ < "$0.dismiss"\n')
    dismiss = suite.bin / "osascript.dismiss"
    os.mkfifo(dismiss)
    run = suite.start(*suite.ports_options)
    wait_until(lambda: suite.events("start"), "the hub's start")
    run.signal(SIGTERM)
    wait_until((suite.bin / "osascript.shown").exists, "the alert")
    run.wait_for(console.hub_silent(suite.http), stream="errors")
    assert suite.process("hub").is_running()
    assert suite.events("stop") == []
    dismiss.write_text("\n")
    assert run.wait() == 1
    assert [row["signal"] for row in suite.events("stop")] == [SIGTERM]
