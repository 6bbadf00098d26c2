"""The wait for the hub's first answer: hubs that are late, strange, dead or not alone."""

import os
import shutil
import socket
import time
from signal import SIGHUP, SIGINT, SIGTERM

import console
import pytest
from foreign import answering_server
from suite import wait_until

NEVER = "600000"  # ms
# One probe of at most 2 s and a pause of 0.1 s; the rest is for a busy machine.
ONE_PROBE = 4.0

# A probe that ends as soon as the newest hub to record its end is dead and not waited for yet, and
# then does what it is asked to.
PROBE_DEAD_HUB = """#!/bin/sh
events=${0%/*}/../events.jsonl
pid=
until [ "$pid" ]; do
  [ -e "$events" ] || continue
  while read -r row; do
    case $row in '{"event":"exit","program":"td_hub",'*) pid=${row#*'"pid":'} pid=${pid%%,*} ;; esac
  done < "$events"
done
until read -r _ _ state _ < /proc/$pid/stat && [ "$state" = Z ]; do :; done
"""


def has_given_up(suite, run, port=None):
    """Whether a run ended as one whose hub did not answer, and showed that once."""
    message = console.hub_silent(suite.http if port is None else port)
    assert run.output == console.TITLE
    assert run.errors == message.encode() + b"\n"
    assert suite.calls("osascript") == [[b"-e", console.alert_script(message).encode()]]
    assert {row["program"] for row in suite.events("start")} <= {"td_hub"}
    assert suite.processes("hub") == []
    assert suite.calls("open") == []
    return True


@pytest.mark.parametrize(
    "behaviour",
    [
        "answer-after=700",
        "answer-404",
        "slow-answer=900",
        "answer-after=300 answer-404 slow-answer=300",
    ],
)
def test_any_complete_answer_will_do(suite, behaviour):
    suite.behave("hub", behaviour)
    run = suite.start_up("--no-browser")
    assert run.stop() == 0
    assert run.errors == b""


@pytest.mark.parametrize(
    "behaviour",
    [
        "exit-at-once",
        "exit-at-once status=1",
        "exit-at-once signal=9",
        "exit-after=300 answer-after=600000",
        "exit-after=1000 never-answer",
    ],
)
def test_a_hub_that_ends_is_noticed(suite, behaviour):
    suite.behave("hub", f"{behaviour} record=events.jsonl")
    run = suite.start(*suite.ports_options)
    assert run.wait() == 1
    assert has_given_up(suite, run)


@pytest.mark.parametrize("contents", ["\x7fELF but no more", "#!/nonexistent/interpreter\n"])
def test_a_hub_that_cannot_be_executed_is_one_that_ended(suite, contents):
    suite.script("td_hub", contents)
    run = suite.start(*suite.ports_options)
    assert run.wait() == 1
    assert has_given_up(suite, run)


def test_there_are_100_probes_and_then_the_hub_is_stopped(suite):
    suite.script("td_hub", "#!/bin/sh\nexec sleep 600\n")
    suite.tool("curl", "#!/bin/sh\nprintf '%s\\0' $# \"$@\" >> \"$0.calls\"\nexit 7\n")
    start = time.monotonic()
    run = suite.start("--http-port", "0")
    assert run.wait(deadline=60) == 1
    assert time.monotonic() - start > 9.9
    url = b"http://127.0.0.1:0/api/health"
    assert suite.calls("curl") == [[b"-s", b"-m", b"2", b"-o", b"/dev/null", url]] * 100
    assert has_given_up(suite, run, port=0)


def test_without_curl_no_hub_is_ready(suite):
    environment = suite.sealed_environment()
    suite.tool("osascript")
    run = suite.start(*suite.ports_options, environment=environment)
    wait_until(lambda: answers(suite.http), "the hub")
    run.wait_for("curl: not found\n", stream="errors", count=run.errors.count(b"curl") + 2)
    suite.kill("hub")
    assert run.wait() == 1
    complaints, _, message = run.errors.partition(b"The hub")
    assert complaints.count(b"curl: not found\n") == complaints.count(b"\n")
    assert b"The hub" + message == console.hub_silent(suite.http).encode() + b"\n"
    assert run.output == console.TITLE


def answers(port):
    with socket.socket() as client:
        return client.connect_ex(("127.0.0.1", port)) == 0


def probe_for_real(suite):
    """Has the probe wait for the new hub's end and then ask whoever answers on the port."""
    suite.tool("curl", PROBE_DEAD_HUB + f'exec {shutil.which("curl")} "$@"\n')


def test_another_programs_answer_on_the_port_is_not_the_hubs(suite):
    suite.record()
    probe_for_real(suite)
    with answering_server(suite.http):
        run = suite.start(*suite.ports_options)
        assert run.wait() == 1
    assert suite.events("exit")[0]["status"] == 1
    assert has_given_up(suite, run)


def test_a_successful_probe_of_a_dead_hub_counts_for_nothing(suite):
    suite.behave("hub", "exit-at-once record=events.jsonl")
    suite.tool("curl", PROBE_DEAD_HUB)
    run = suite.start(*suite.ports_options)
    assert run.wait() == 1
    assert has_given_up(suite, run)


def first_copy(suite):
    """Starts a first copy; returns it with its components' processes."""
    suite.record()
    first = suite.start_up("--no-browser")
    # A component reads its behaviour when it starts, so what a test changes next is the second
    # copy's alone only once these have started.
    wait_until(lambda: len(suite.events("start")) == 3, "the first copy's components")
    processes = [suite.process(name) for name in ("hub", "receiver", "sender")]
    return first, processes


def leaves_alone(suite, run, first, processes):
    """Whether a second copy ended as it should while the first one runs on, and then ends too."""
    assert run.wait() == 1
    assert run.output == console.TITLE
    assert run.errors == console.hub_silent(suite.http).encode() + b"\n"
    assert [row["program"] for row in suite.events("start")[3:]] == ["td_hub"]
    assert all(process.is_running() for process in processes)
    assert first.stop() == 0
    assert first.errors == b""
    return True


@pytest.mark.parametrize("own_control_port", [False, True])
def test_a_second_copy_on_the_dashboard_port_says_so_and_leaves_the_first_alone(
    suite, own_control_port
):
    udp = suite.ports.free() if own_control_port else suite.udp
    first, processes = first_copy(suite)
    probe_for_real(suite)
    second = suite.start("--http-port", suite.http, "--udp-port", udp)
    assert leaves_alone(suite, second, first, processes)


@pytest.mark.parametrize("behaviour", ["", "slow-answer=500"])
def test_a_second_copy_probing_at_its_own_pace(suite, behaviour):
    suite.behave("hub", behaviour)
    first, processes = first_copy(suite)
    assert leaves_alone(suite, suite.start(*suite.ports_options), first, processes)


def test_a_second_copy_whose_hub_finds_the_port_taken_late(suite):
    first, processes = first_copy(suite)
    suite.behave("hub", f"answer-after={NEVER} exit-after=300 status=1 record=events.jsonl")
    second = suite.start("--http-port", suite.http, "--udp-port", suite.ports.free())
    assert leaves_alone(suite, second, first, processes)


def press_ctrl_c_during_the_wait(suite, moment):
    """At a moment of the wait for the hub: it ends within one probe, with the hub's message."""
    run = suite.start(*suite.ports_options, terminal="all")
    run.wait_for("1.4.4+412")
    time.sleep(moment)
    pressed = time.monotonic()
    run.interrupt()
    assert run.wait() == 1
    assert time.monotonic() - pressed < ONE_PROBE
    assert console.hub_silent(suite.http).replace("\n", "\r\n").encode() in run.output


@pytest.mark.parametrize("moment", [step * 0.23 for step in range(11)])
def test_ctrl_c_ends_the_wait_for_a_hub_that_never_answers(suite, moment):
    suite.behave("hub", "never-answer record=events.jsonl")
    press_ctrl_c_during_the_wait(suite, moment)
    assert [row["signal"] for row in suite.events("stop")] in ([SIGTERM], [])
    assert suite.processes("hub") == []


@pytest.mark.parametrize("moment", [step * 0.017 for step in range(12)])
def test_ctrl_c_ends_the_wait_for_a_hub_that_refuses(suite, moment):
    suite.behave("hub", f"answer-after={NEVER}")
    press_ctrl_c_during_the_wait(suite, moment)


@pytest.mark.parametrize("number", [SIGINT, SIGTERM, SIGHUP])
@pytest.mark.parametrize("behaviour", ["never-answer", f"answer-after={NEVER}"])
def test_a_signal_to_the_launcher_alone_ends_the_wait(suite, number, behaviour):
    suite.behave("hub", f"{behaviour} record=events.jsonl")
    run = suite.start(*suite.ports_options)
    wait_until(lambda: suite.events("start"), "the hub's start")
    sent = time.monotonic()
    assert run.stop(number) == 1
    assert time.monotonic() - sent < ONE_PROBE
    assert has_given_up(suite, run)


def test_a_ctrl_c_that_only_the_probe_felt_ends_the_wait(suite):
    suite.behave("hub", f"answer-after={NEVER} record=events.jsonl")
    suite.tool("curl", '#!/bin/sh\nprintf "%s\\0" $# "$@" >> "$0.calls"\nkill -INT $$\n')
    run = suite.start(*suite.ports_options)
    assert run.wait() == 1
    assert len(suite.calls("curl")) == 1
    assert has_given_up(suite, run)


def test_a_probe_that_another_signal_ended_is_only_a_failed_one(suite):
    suite.tool("curl", f"""#!/bin/sh
if [ ! -e "$0.calls" ]; then : > "$0.calls"; kill -TERM $$; fi
exec {shutil.which("curl")} "$@"
""")
    run = suite.start_up("--no-browser")
    assert run.stop() == 0


def test_the_hub_is_stopped_after_the_alert_is_dismissed(suite):
    suite.behave("hub", f"answer-after={NEVER} record=events.jsonl")
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
