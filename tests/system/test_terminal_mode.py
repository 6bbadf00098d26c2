"""The mode of a terminal that components share: the launcher repairs it when they end."""

import os
import termios
from signal import SIGKILL

import console
import pytest
from console import RESTARTING
from deadline import wait_until
from hub_scripts import move_hub
from run import CTRL_C

RAW = "stty raw -echo intr undef </dev/tty"

# Sets raw mode at its first start only, and keeps running.
RAW_AT_FIRST = f"""#!/bin/sh
if [ ! -e "$0.raw" ]; then
  {RAW}
  echo $$ > "$0.raw"
fi
exec sleep 600
"""

RAW_AND_ENDS = f"#!/bin/sh\n{RAW}\nexit 1\n"


def mode(run):
    return termios.tcgetattr(run.terminal)


def has(run, flag):
    """Whether a local flag of the terminal is set."""
    return mode(run)[3] & flag != 0


def change_mode(run, flag):
    """Clears a local flag of the terminal."""
    changed = mode(run)
    changed[3] &= ~flag
    termios.tcsetattr(run.terminal, termios.TCSANOW, changed)
    return changed


def start_verbose(suite, *options, redirection=""):
    """A run whose components share its terminal, and the mode that the terminal had before."""
    command = [*suite.ports_options, "--no-browser", "--verbose", *options]
    script = f'read -r _; exec "$0" "$@" {redirection}'
    run = suite.start("-c", script, suite.launcher, *command, program="/bin/sh", terminal="all")
    before = mode(run)
    run.press(b"\n")
    return run, before


def kill_in_raw_mode(suite, run, name):
    """Kills a component once it has set raw mode, and waits until the supervisor has noticed."""
    pid = suite.folder / f"td_{name}.raw"
    wait_until(lambda: pid.exists() and pid.read_text(), "the raw mode")
    assert not has(run, termios.ISIG)
    os.kill(int(pid.read_text()), SIGKILL)
    run.wait_for(RESTARTING.format(name).strip())


def check_ctrl_c(run, before):
    """Ends the run with Ctrl-C, and checks that the mode is the one from before."""
    run.press(CTRL_C)
    assert run.wait() == 0
    assert mode(run) == before


def test_ctrl_c_works_after_a_component_was_killed_in_raw_mode(suite):
    suite.script("td_receiver", RAW_AT_FIRST)
    run, before = start_verbose(suite)
    run.wait_for(console.READY)
    kill_in_raw_mode(suite, run, "receiver")
    assert has(run, termios.ISIG) and not has(run, termios.ECHO)  # others may still draw
    check_ctrl_c(run, before)


def test_ctrl_c_works_after_a_component_has_ended_in_raw_mode_each_time(suite):
    suite.script("td_sender", RAW_AND_ENDS)
    run, before = start_verbose(suite)
    run.wait_for("the sender keeps exiting")
    check_ctrl_c(run, before)


def test_the_mode_is_back_when_no_component_runs(suite):
    suite.script("td_hub", RAW_AT_FIRST.replace("exec sleep 600", f'exec {move_hub(suite)} "$@"'))
    run, before = start_verbose(suite, "--no-receiver", "--no-sender")
    run.wait_for(console.READY)
    kill_in_raw_mode(suite, run, "hub")
    assert mode(run) == before
    check_ctrl_c(run, before)


def test_the_mode_is_back_when_the_hub_ends_during_the_start_up(suite):
    suite.script("td_hub", RAW_AND_ENDS)
    run, before = start_verbose(suite)
    run.wait_for("The hub did not start")
    assert mode(run) == before  # while the alert is shown, too
    assert run.wait() == 1
    assert mode(run) == before


def test_the_mode_is_back_after_components_that_were_stopped(suite):
    suite.script("td_receiver", RAW_AT_FIRST)
    run, before = start_verbose(suite)
    run.wait_for(console.READY)
    wait_until((suite.folder / "td_receiver.raw").exists, "the raw mode")
    assert run.stop() == 0
    assert mode(run) == before


def test_the_controlling_terminal_is_repaired_even_if_it_is_not_the_input(suite):
    suite.script("td_receiver", RAW_AT_FIRST)
    run, before = start_verbose(suite, redirection="</dev/null")
    run.wait_for(console.READY)
    kill_in_raw_mode(suite, run, "receiver")
    check_ctrl_c(run, before)


def test_in_the_background_the_mode_is_left_alone(suite):
    command = [*suite.ports_options, "--no-browser", "--verbose"]
    script = 'set -m; "$0" "$@" & echo "launcher $!"; read -r _; wait $!; echo "status $?"'
    run = suite.start("-c", script, suite.launcher, *command, program="/bin/sh", terminal="all")
    run.wait_for(console.READY)
    changed = change_mode(run, termios.ISIG | termios.ECHOCTL)
    suite.kill("receiver")
    run.wait_for(RESTARTING.format("receiver").strip())
    (launcher,) = [p for p in suite.processes() if p.exe() == str(suite.launcher)]
    launcher.terminate()
    run.press(b"\n")
    run.wait_for("status 0")
    assert run.wait() == 0
    assert mode(run) == changed


def test_a_run_whose_components_do_not_share_the_terminal_leaves_it_alone(suite):
    run = suite.start_up("--no-browser", terminal="all")
    changed = change_mode(run, termios.ISIG)
    old = suite.kill("receiver")
    suite.wait_for_restart("receiver", old)
    assert run.stop() == 0
    assert mode(run) == changed


@pytest.mark.parametrize("status", [0, 1])
def test_the_mode_left_by_a_component_run_by_its_name_stays(suite, status):
    suite.script("td_align", f"#!/bin/sh\n{RAW}\nexit {status}\n")
    run = suite.start("align", terminal="all")
    assert run.wait() == status
    assert not has(run, termios.ISIG | termios.ECHO)
