"""An all-in-one run: what it prints and which components it starts."""

import shlex
import shutil
import subprocess
from pathlib import Path
from signal import SIGINT, SIGTERM

import console
import psutil
import pytest
import system
from component_events import start_recording
from components import COMPONENTS, client_arguments, hub_arguments
from console import READY
from deadline import DEADLINE, wait_until
from suite import NEVER


def programs(suite):
    return [row["program"] for row in suite.events("start")]


@pytest.mark.parametrize(
    "options, running, started",
    [
        ([], "hub, receiver, sender", {"td_hub", "td_receiver", "td_sender"}),
        (["--no-sender"], "hub, receiver", {"td_hub", "td_receiver"}),
        (["--no-receiver"], "hub, sender", {"td_hub", "td_sender"}),
        (["--no-receiver", "--no-sender"], "hub", {"td_hub"}),
    ],
)
@pytest.mark.parametrize("verbose", [False, True])
def test_the_complete_output_of_a_run(suite, options, running, started, verbose):
    suite.record()
    run = suite.start_up(*options, *(["--verbose"] if verbose else []))
    wait_until(lambda: len(programs(suite)) == len(started), "the components' starts")
    assert run.stop() == 0
    assert run.output == (
        console.TITLE
        + console.announcement(
            console.dashboard_url(suite.http),
            running=running,
            no_sender="--no-sender" in options,
            verbose=verbose,
        )
        + console.STOPPED
    )
    assert run.errors == b""
    assert sorted(programs(suite)) == sorted(started)


def test_the_arguments_of_all_components(suite):
    run = start_recording(suite)
    assert run.stop() == 0
    clients = client_arguments(suite.udp)
    assert {row["program"]: row["argv"] for row in suite.events("start")} == {
        "td_hub": [str(suite.component("hub")), *hub_arguments(suite.http, suite.udp)],
        "td_receiver": [str(suite.component("receiver")), *clients],
        "td_sender": [str(suite.component("sender")), *clients],
    }


def test_the_clients_get_the_control_port_cut_to_16_bits(suite):
    suite.record()
    run = suite.start(
        *("--http-port", suite.http + 65536, "--udp-port", suite.udp - 65536, "--no-browser")
    )
    run.wait_for(READY)
    wait_until(lambda: len(programs(suite)) == 3, "the components' starts")
    assert run.stop() == 0
    arguments = {row["program"]: row["argv"][1:] for row in suite.events("start")}
    assert arguments["td_hub"][1::2] == [str(suite.udp), str(suite.http)]
    assert arguments["td_receiver"] == arguments["td_sender"] == client_arguments(suite.udp)


def test_the_clients_start_in_order_once_the_hub_answers(suite):
    suite.record()
    suite.set_behaviour("hub", "answer-after=400 record=events.jsonl")
    run = suite.start_up("--no-browser")
    wait_until(lambda: len(programs(suite)) == 3, "the components' starts")
    time = {row["program"]: row["time_ns"] for row in suite.events("start")}
    assert min(time["td_receiver"], time["td_sender"]) - time["td_hub"] > 400e6
    hub, receiver, sender = (suite.process(name) for name in COMPONENTS)
    assert hub.create_time() <= receiver.create_time() <= sender.create_time()
    pids = system.pid_count()
    assert (sender.pid - receiver.pid) % pids < pids // 2  # pids wrap around
    assert run.stop() == 0


def test_the_title_comes_before_the_hub_answers_and_the_rest_after(suite):
    suite.set_behaviour("hub", f"answer-after={NEVER}")
    run = suite.start(*suite.ports_options)
    run.wait_for(f"{console.VERSION}\x1b[0m\n")  # unbuffered, although it is a pipe
    assert run.stop() == 1
    assert run.output == console.TITLE


def test_the_ports_come_from_the_settings_unless_an_option_says_otherwise(suite):
    suite.record("hub")
    suite.save_settings(f'{{"http_port": {suite.http}, "udp_port": 4999}}')
    run = suite.start("--udp-port", suite.udp, "--no-browser")
    run.wait_for(READY)
    assert console.dashboard_url(suite.http).encode() in run.output
    assert run.stop() == 0
    assert suite.events("start")[0]["argv"][2::2] == [str(suite.udp), str(suite.http)]


def make_unusable(suite, name, how):
    path = suite.component(name)
    path.unlink()
    if how == "forbidden":
        suite.script(path, "#!/bin/sh\n").chmod(0o644)


@pytest.mark.parametrize("how", ["missing", "forbidden"])
@pytest.mark.parametrize("names", [["receiver"], ["sender"], ["receiver", "sender"]])
def test_a_client_that_cannot_start_is_reported_and_the_run_goes_on(suite, names, how):
    suite.record()
    for name in names:
        make_unusable(suite, name, how)
    run = suite.start_up()
    wait_until(lambda: len(programs(suite)) == 3 - len(names), "the components' starts")
    assert run.stop() == 0
    assert run.errors == b"".join(
        f"Tandrel: could not start the {name} ({suite.component(name)})\n".encode()
        for name in names
    )
    assert run.output == (
        console.TITLE
        + console.announcement(console.dashboard_url(suite.http))
        + console.STOPPED
    )


def test_a_client_that_is_left_out_may_be_missing(suite):
    make_unusable(suite, "sender", "missing")
    run = suite.start_up("--no-sender")
    assert run.stop() == 0
    assert run.errors == b""


@pytest.mark.parametrize("how", ["missing", "forbidden"])
def test_without_a_hub_nothing_starts(suite, how):
    suite.record()
    make_unusable(suite, "hub", how)
    run = suite.start(*suite.ports_options)
    assert run.wait() == 1
    message = console.hub_missing(suite.component("hub"))
    assert run.output == console.TITLE
    assert run.errors == message.encode() + b"\n"
    assert suite.calls("osascript") == [[b"-e", console.alert_script(message).encode()]]
    assert suite.calls("open") == suite.events() == []


def test_a_terminal_shows_the_same_lines(suite):
    run = suite.start_up(terminal="all")
    wait_until(lambda: suite.calls("open"), "the browser")  # so all before it has been printed
    run.interrupt()
    assert run.wait() == 0
    text = (
        console.TITLE
        + console.announcement(console.dashboard_url(suite.http))
        + b"^C"  # the terminal's own
        + console.STOPPED
    )
    assert run.output == text.replace(b"\n", b"\r\n")


def test_verbose_components_draw_on_the_terminal(suite):
    run = suite.start_up("--verbose", terminal="all")
    for name in ("td_hub", "td_receiver", "td_sender"):
        run.wait_for(f"{name} (stand-in)")
    run.interrupt()
    assert run.wait() == 0


INTERFACE_MODULE = """
#include <fcntl.h>
__attribute__((constructor)) static void loaded(void) { creat("module-loaded", 0600); }
"""


@pytest.fixture(scope="session")
def module_without_functions(session_folder):
    """A module that makes a file when it is loaded, and has no interface."""
    source = Path(session_folder, "module.c")
    source.write_text(INTERFACE_MODULE)
    module = source.with_suffix(".so")
    subprocess.run(["cc", "-shared", "-fPIC", "-o", module, source], check=True)
    return module


@system.needs("interface module")
@pytest.mark.parametrize("number", [SIGINT, SIGTERM])
@pytest.mark.parametrize("terminal", [None, "input", "output", "all"])
def test_only_a_run_without_any_terminal_loads_an_interface(
    suite, module_without_functions, terminal, number
):
    shutil.copy2(module_without_functions, suite.folder / "tdgui.so")
    run = suite.start_up("--no-browser", terminal=terminal)
    loaded = suite.folder / "module-loaded"
    if terminal is None:
        wait_until(loaded.exists, "the module to be loaded")
    # With a terminal, or without an interface, the run lasts until a signal.
    old = suite.kill("receiver")
    suite.wait_for_restart("receiver", old)
    assert run.stop(number) == 0
    assert run.output.replace(b"\r", b"").endswith(console.STOPPED)
    assert loaded.exists() == (terminal is None)


def test_a_run_without_terminal_and_interface_prints_the_same(suite):
    run = suite.start_up("--no-browser", terminal=None)
    assert run.stop(SIGTERM) == 0
    assert run.output == (
        console.TITLE
        + console.announcement(console.dashboard_url(suite.http))
        + console.STOPPED
    )
    assert run.errors == b""


@system.needs("interface module")
def test_output_in_a_file_and_input_from_a_terminal_is_console_use(suite, module_without_functions):
    shutil.copy2(module_without_functions, suite.folder / "tdgui.so")
    command = shlex.join([str(suite.launcher), *suite.ports_options, "--no-browser"])
    log = suite.folder / "log"
    run = suite.start("-c", f"exec {command} > log", program="/bin/sh")
    wait_until(lambda: log.exists() and b"Ctrl-C here" in log.read_bytes(), "the lines in the log")
    old = suite.kill("receiver")
    suite.wait_for_restart("receiver", old)
    assert run.stop() == 0
    assert log.read_bytes() == (
        console.TITLE
        + console.announcement(console.dashboard_url(suite.http))
        + console.STOPPED
    )
    assert not (suite.folder / "module-loaded").exists()


def test_a_closed_output_pipe_does_not_end_the_run(suite):
    suite.record()
    command = [suite.launcher, *suite.ports_options, "--no-browser"]
    run = subprocess.Popen(
        command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, cwd=suite.folder
    )
    run.stdout.close()
    try:
        wait_until(lambda: len(programs(suite)) == 3, "the components' starts")
    finally:
        run.send_signal(SIGINT)
    assert run.wait(timeout=DEADLINE) == 0


def test_two_runs_on_different_ports_are_independent(suite):
    first = suite.start_up("--no-browser")
    second = suite.start(
        *("--http-port", suite.ports.free(), "--udp-port", suite.ports.free(), "--no-browser")
    )
    second.wait_for(READY)
    wait_until(lambda: len(suite.processes("sender")) == 2, "both senders")
    assert second.stop() == 0
    for name in COMPONENTS:
        assert suite.process(name).parent() == psutil.Process(first.pid)
    assert first.stop() == 0
