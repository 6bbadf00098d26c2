"""`launcher COMPONENT ...`: arguments, streams, signals and exit status are the component's."""

import os
import shutil
import signal
import subprocess
import sys

import closed_streams
import console
import pytest
import system
from components import ALL_COMPONENTS
from deadline import DEADLINE, wait_until
from inherited_signals import start_with_signals
from run import CTRL_C

SENDER = ["sender", "--hub", "127.0.0.1:1"]


def start_sender(suite, **signals):
    """Starts a sender by its name, without a terminal; returns the run and the sender's start event.

    `signals`: those that are "ignored" or "blocked" when the launcher starts.
    """
    suite.record("sender")
    # In a new session, because these tests may run in the foreground of a terminal.
    run = start_with_signals(suite, *SENDER, terminal=None, start_new_session=True, **signals)
    (start,) = wait_until(lambda: suite.events("start"), "the sender's start")
    return run, start


def received(suite, name):
    """The arguments of the one start of a component, as bytes."""
    (start,) = suite.events("start", f"td_{name}")
    return [argument.encode("latin-1") for argument in start["argv"]]


@pytest.mark.parametrize("name", ALL_COMPONENTS)
def test_each_name_runs_its_component(suite, name):
    suite.record()
    run = suite.start(name, "--help")
    assert run.wait() == 0
    assert run.errors == b""
    direct = subprocess.run([suite.component(name), "--help"], stdout=subprocess.PIPE, check=True)
    assert run.output == direct.stdout != b""
    starts = suite.events("start")
    assert [row["program"] for row in starts] == [f"td_{name}"] * 2
    assert starts[0]["argv"] == [str(suite.component(name)), "--help"]


@pytest.mark.parametrize(
    "arguments",
    [
        [],
        [""],
        ["-h"],
        ["--no-sender", "--http-port", "1"],
        ["hub", "sender"],
        ["two words", " ", "\t", "line\nfeed", ""],
        ["'single'", '"double"', "$HOME", "`id`", "$(id)", "a;b", "back\\slash", "*", "~", "%s"],
        ["Größe", os.fsdecode(b"\xff\x80\x01")],
        [str(number) for number in range(2000)],
        ["x" * 100_000],
    ],
    ids=lambda arguments: f"{len(arguments)} arguments",
)
def test_every_argument_is_passed_unchanged(suite, arguments):
    suite.record("align")
    run = suite.start("align", *arguments)
    assert run.wait() == 0
    assert run.errors == b""
    expected = [str(suite.component("align")), *arguments]
    assert received(suite, "align") == [os.fsencode(argument) for argument in expected]


def test_every_exit_status_is_returned(suite):
    suite.script("td_align", '#!/bin/sh\nexit "$1"\n')
    for first in range(0, 256, 16):
        batch = range(first, first + 16)
        runs = [subprocess.Popen([suite.launcher, "align", str(status)]) for status in batch]
        assert [run.wait() for run in runs] == list(batch)


ENDING_SIGNALS = ["KILL", "TERM", "INT", "HUP", "USR1", "ABRT", "SEGV"]
REAL_TIME_SIGNALS = ["RTMIN"] if hasattr(signal, "SIGRTMIN") else []


@pytest.mark.parametrize("number", ENDING_SIGNALS + REAL_TIME_SIGNALS)
def test_a_component_killed_by_a_signal_gives_1(suite, number):
    suite.script("td_sender", f"#!/bin/bash\nulimit -c 0\nkill -{number} $$\n")
    run = suite.start("sender")
    assert run.wait() == 1
    assert run.output == run.errors == b""


def remove(path):
    path.unlink()


def forbid(path):
    path.chmod(0o644)


@pytest.mark.parametrize("make_unusable", [remove, forbid])
@pytest.mark.parametrize("name", ALL_COMPONENTS)
def test_a_missing_component_is_reported_with_its_path(suite, name, make_unusable):
    shutil.copy2(suite.component(name), suite.folder / "copy")
    os.replace(suite.folder / "copy", suite.component(name))  # the original is a link that suites share
    make_unusable(suite.component(name))
    suite.tool(f"td_{name}")  # PATH is not searched
    run = suite.start(name, "--http-port", "1")
    assert run.wait() == 1
    assert run.output == b""
    assert run.errors == console.component_missing(name, suite.component(name)).encode()
    assert suite.calls(f"td_{name}") == suite.calls("osascript") == []


@pytest.mark.parametrize("contents", ["\x7fELF but no more", "#!/nonexistent/interpreter\n"])
def test_a_component_that_cannot_be_executed_gives_127(suite, contents):
    suite.script("td_hub", contents)
    run = suite.start("hub")
    assert run.wait() == 127
    assert run.output == run.errors == b""


def test_a_folder_named_like_the_component_gives_127(suite):
    suite.component("hub").unlink()
    suite.component("hub").mkdir()
    run = suite.start("hub")
    assert run.wait() == 127
    assert run.output == run.errors == b""


def test_the_streams_are_the_launchers(suite):
    suite.script("td_align", "#!/bin/sh\necho to errors >&2\ncat\n")
    done = subprocess.run([suite.launcher, "align"], input=b"from input", capture_output=True)
    assert (done.returncode, done.stdout, done.stderr) == (0, b"from input", b"to errors\n")


def test_the_component_shares_terminal_session_and_group(suite):
    suite.record("sender")
    # The launcher is the session leader here: at its end the sender gets SIGHUP.
    run = start_with_signals(suite, *SENDER, ignored=[signal.SIGHUP], terminal="all")
    (start,) = wait_until(lambda: suite.events("start"), "the sender's start")
    assert start["isatty"] == [True, True, True]
    assert len(set(start["stdio"])) == 1
    assert start["ppid"] == start["pgid"] == start["sid"] == run.pid
    run.interrupt()
    assert run.wait_for_process() == -signal.SIGINT
    wait_until(lambda: suite.events("exit"), "the sender's end")
    assert [row["signal"] for row in suite.events("stop")] == [signal.SIGINT]


@system.needs("end with parent")
def test_the_launcher_changes_no_signal_handling(suite):
    run, start = start_sender(suite)
    assert start["ignored"] == start["blocked"] == []
    assert run.process.poll() is None
    run.signal(signal.SIGTERM)
    assert run.wait_for_process() == -signal.SIGTERM  # nothing in the launcher caught it
    wait_until(lambda: suite.events("exit"), "the sender's end")


@system.needs("end with parent")
@pytest.mark.parametrize("number", [signal.SIGKILL, signal.SIGTERM, signal.SIGHUP])
def test_a_component_gets_sigterm_when_the_launcher_is_killed(suite, number):
    run, start = start_sender(suite)
    run.signal(number)
    assert run.wait() == -number  # its output ends with the sender
    assert [row["signal"] for row in suite.events("stop")] == [signal.SIGTERM]
    assert [row["status"] for row in suite.events("exit")] == [0]
    wait_until(lambda: system.has_ended(start["pid"]), "the sender's end")


@system.needs("end with parent")
def test_a_background_job_of_a_script_ends_with_the_launcher(suite):
    """It is in the terminal's foreground, because the script's shell has no job control."""
    suite.record("sender")
    # The shell stays until the sender has ended, which would otherwise get SIGHUP.
    script = '"$0" "$@" & wait $!; echo "ended with $?"; read -r _'
    run = suite.start("-c", script, suite.launcher, *SENDER, program="/bin/sh", terminal="all")
    (start,) = wait_until(lambda: suite.events("start"), "the sender's start")
    assert start["pgid"] == run.pid
    os.kill(start["ppid"], signal.SIGTERM)
    run.wait_for(f"ended with {128 + signal.SIGTERM}")
    wait_until(lambda: suite.events("exit"), "the sender's end")
    assert [row["signal"] for row in suite.events("stop")] == [signal.SIGTERM]
    run.press(b"\n")
    assert run.wait() == 0


@system.needs("end with parent")
def test_a_component_that_ignores_sigterm_survives_the_launcher(suite):
    suite.set_behaviour("sender", "ignore-sigterm")
    run, start = start_sender(suite)
    run.signal(signal.SIGKILL)
    assert run.wait_for_process() == -signal.SIGKILL
    wait_until(lambda: suite.events("ignored"), "the sender to get its SIGTERM")
    assert not system.has_ended(start["pid"]) and not system.is_suspended(start["pid"])
    assert suite.kill("sender") == start["pid"]
    run.wait()
    assert [row["signal"] for row in suite.events("ignored")] == [signal.SIGTERM]


SAVING_COMPONENT = f"""#!{sys.executable} -IS
import signal

def note(text):
    with open("{{folder}}/notes", "a") as notes:
        notes.write(text + "\\n")

signals = {{{{signal.SIGINT, signal.SIGTERM}}}}
signal.pthread_sigmask(signal.SIG_BLOCK, signals)
note("ready")
while signal.sigwait(signals) == signal.SIGTERM:
    note("SIGTERM")
note("saving")
with open("{{folder}}/go") as go:
    go.read()
for number in signal.sigpending():
    note(number.name)
note("saved")
"""


def test_at_ctrl_c_the_component_ends_in_its_own_time(suite):
    notes = suite.folder / "notes"
    go = suite.folder / "go"
    os.mkfifo(go)
    suite.script("td_align", SAVING_COMPONENT.format(folder=suite.folder))
    # As usual, a shell is the session leader: its end would hang up the terminal.
    script = 'trap : INT; "$0" align; echo "ended with $?"; read -r _'
    run = suite.start("-c", script, suite.launcher, program="/bin/sh", terminal="all")

    def noted():
        return notes.read_text().split() if notes.exists() else []

    wait_until(lambda: noted() == ["ready"], "the component's start")
    run.press(CTRL_C)
    wait_until(lambda: "saving" in noted(), "the component's Ctrl-C")
    run.wait_for(f"ended with {128 + signal.SIGINT}")
    (component,) = suite.processes("align")
    go.write_text("")  # opens once the component reads, and lets it continue
    wait_until(lambda: system.has_ended(component.pid), "the component's end")
    assert noted() == ["ready", "saving", "saved"]
    run.press(b"\n")
    assert run.wait_for_process() == 0


@system.needs("end with parent", "signals of others")
def test_a_blocked_sigterm_stays_blocked(suite):
    """In the launcher and in the component, which then survives the launcher."""
    ending = {signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT}
    run, start = start_sender(suite, blocked=ending)
    assert set(start["blocked"]) == ending
    # While it starts the component the launcher blocks all signals.
    wait_until(lambda: system.signal_set(run.pid, "Blk") == ending, "the launcher's own mask")
    run.signal(signal.SIGKILL)
    assert run.wait_for_process() == -signal.SIGKILL
    # The kernel sends the signal before the launcher can be reaped.
    assert system.signal_set(start["pid"], "ShdPnd") == {signal.SIGTERM}
    assert suite.kill("sender") == start["pid"]
    run.wait()
    assert suite.events("stop") == suite.events("exit") == []


def test_signal_dispositions_and_mask_are_inherited_except_for_int_and_term(suite):
    suite.record("align")
    ignored = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGPIPE, signal.SIGUSR1]
    run = start_with_signals(suite, "align", ignored=ignored, blocked=[signal.SIGUSR2])
    assert run.wait() == 0
    (start,) = suite.events("start")
    assert start["ignored"] == sorted([signal.SIGHUP, signal.SIGUSR1, signal.SIGPIPE])
    assert start["blocked"] == [signal.SIGUSR2]


def test_with_an_ignored_sigchld_the_status_is_still_returned(suite):
    suite.set_behaviour("align", "status=3")
    run = start_with_signals(suite, "align", ignored=[signal.SIGCHLD])
    assert run.wait() == 3


def test_after_a_suspension_the_status_is_still_returned(suite):
    suite.script("td_align", "#!/bin/sh\nread -r status\nexit $status\n")
    run = subprocess.Popen([suite.launcher, "align"], stdin=subprocess.PIPE)
    wait_until(lambda: suite.processes("align"), "the component's start")
    run.send_signal(signal.SIGSTOP)
    wait_until(lambda: system.is_suspended(run.pid), "the suspension")
    run.send_signal(signal.SIGCONT)
    wait_until(lambda: system.is_waiting(run.pid), "the launcher to continue")
    run.communicate(b"5\n")
    assert run.returncode == 5


def test_the_launcher_waits_only_for_the_component_itself(suite):
    suite.script("td_align", "#!/bin/sh\nsleep 600 &\necho $!\nexit 4\n")
    run = subprocess.Popen([suite.launcher, "align"], stdout=subprocess.PIPE)
    background = int(run.stdout.readline())
    try:
        assert run.wait(timeout=DEADLINE) == 4
    finally:
        os.kill(background, signal.SIGKILL)
        wait_until(lambda: system.has_ended(background), "the process in the background to end")
        run.stdout.close()


def test_descriptors_are_inherited(suite):
    suite.record("align")
    reading, writing = os.pipe()
    run = suite.start("align", pass_fds=[reading, writing])
    os.close(reading)
    os.close(writing)
    assert run.wait() == 0
    assert suite.events("start")[0]["descriptors"] == [reading, writing]


@pytest.mark.parametrize("closed", closed_streams.COMBINATIONS, ids=str)
def test_closed_streams_stay_closed(suite, closed):
    suite.set_behaviour("sender", "exit-after=0")
    suite.record("sender")
    program = closed_streams.program_that_closes(suite, closed)
    run = suite.start("sender", "--hub", "127.0.0.1:1", program=program, terminal=None)
    assert run.wait() == 0
    (start,) = suite.events("start")
    assert start["stdio"] == closed_streams.targets(suite, run, closed, "")
    assert start["descriptors"] == []


def test_the_environment_and_the_working_folder_are_inherited(suite, environment_printer):
    suite.component("align").unlink()
    suite.component("align").symlink_to(environment_printer)
    environment = {"HOME": "", "ODD": "a=b\n", "PATH": suite.environment["PATH"], "LAST": ""}
    run = suite.start("align", environment=environment, cwd=suite.home)
    assert run.wait() == 0
    folder, _, variables = run.output.partition(b"\0")
    assert folder == bytes(suite.home)
    assert variables == b"HOME=\0ODD=a=b\n\0PATH=" + environment["PATH"].encode() + b"\0LAST=\0"


def test_no_settings_folder_is_made(suite):
    assert suite.start("align").wait() == 0
    assert not suite.settings.parent.exists()
