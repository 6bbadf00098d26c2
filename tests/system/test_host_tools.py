"""The external tools: their command lines, and the effect of their output and exit statuses.

How each kind of message is quoted is also tested by tests/unit/tools_test.cpp and platform_test.cpp.
"""

import os
import signal

import console
import probe_tools
import psutil
import pytest
import system
from deadline import wait_until

ALERT_TOOLS = {
    "zenity": ["--error", "--title", "Tandrel", "--no-markup", "--text"],
    "kdialog": ["--title", "Tandrel", "--error"],
    "xmessage": ["-title", "Tandrel", "-center"],
}
# Names of folders with characters that are special to a shell, in AppleScript strings, or to a terminal.
SHELL_COMMANDS = "$(touch pwned) `touch pwned` ${HOME} $HOME"
SPECIAL_NAMES = [
    'double "quotes" and back\\slashes\\',
    SHELL_COMMANDS,
    "line\nfeed\ttab %s%n%d <b>&amp;<i>",
    pytest.param(os.fsdecode(b"\xff\xfe"), marks=system.needs("any file name")),
]
NAMES_WITH_A_SINGLE_QUOTE = ["a';touch pwned;'b", "it's"]


def files_of_injected_commands(suite):
    """The files made by commands in a folder's name."""
    return [path for path in suite.folder.parent.rglob("*") if path.name == "pwned"]


def run_without_hub(suite, environment=None):
    """Runs the launcher without its hub and returns the message."""
    suite.component("hub").unlink(missing_ok=True)
    run = suite.start(environment=environment)
    assert run.wait() == 1
    message = os.fsencode(console.hub_missing(suite.component("hub")))
    assert run.output == console.TITLE
    assert run.errors == message + b"\n"
    return message


def test_the_probes_command_line(suite):
    probe_tools.record_and_probe(suite)
    suite.set_behaviour("hub", "answer-after=1000")
    run = suite.start_up("--no-browser")
    assert run.stop() == 0
    calls = suite.calls("curl")
    assert calls == [console.probe_arguments(suite.http)] * len(calls)
    assert len(calls) > 1


def test_the_browser_gets_the_address_once(suite):
    run = suite.start_up()
    assert run.stop() == 0
    url = console.dashboard_url(suite.http)
    assert f"\x1b[1;36m{url}\x1b[0m\n".encode() in run.output
    assert suite.calls("open") == [[url.encode()]]
    assert suite.calls("xdg-open") == []


@system.needs("browser tools")
def test_without_open_xdg_open_is_used(suite):
    environment = suite.sealed_environment("curl")
    suite.tool("xdg-open")
    run = suite.start_up(environment=environment)
    assert run.stop() == 0
    assert run.errors == b""
    assert suite.calls("xdg-open") == [[console.dashboard_url(suite.http).encode()]]


@system.needs("browser tools")
def test_an_open_that_is_not_executable_is_skipped(suite):
    environment = suite.sealed_environment("curl")
    suite.tool("open").chmod(0o644)
    suite.tool("xdg-open")
    run = suite.start_up(environment=environment)
    assert run.stop() == 0
    assert suite.calls("xdg-open") == [[console.dashboard_url(suite.http).encode()]]


def test_without_any_browser_tool_there_is_an_error_and_the_run_goes_on(suite):
    run = suite.start_up(environment=suite.sealed_environment("curl"))
    run.wait_for("not found\n", stream="errors")
    old = suite.kill("receiver")
    suite.wait_for_restart("receiver", old)
    assert run.stop() == 0
    assert console.RESTARTING.format("receiver").encode() in run.errors


def test_the_browser_tools_output_is_shown_and_its_status_ignored(suite):
    suite.tool("open", "#!/bin/sh\necho to output\necho to errors >&2\nexit 3\n")
    run = suite.start_up()
    run.wait_for("to output\n")
    run.wait_for("to errors\n", stream="errors")
    assert run.stop() == 0
    assert run.output.endswith(console.STOPPED)


def start_with_lasting_browser(suite, **options):
    """A run, and the process id of the browser tool that it has started."""
    show_and_wait = 'echo output of the browser\nread -r _ < "$0.never"\n'
    suite.tool("open", '#!/bin/sh\necho $$ > "$0.pid"\n' + show_and_wait)
    os.mkfifo(suite.bin / "open.never")
    run = suite.start_up(**options)
    pid_file = suite.bin / "open.pid"
    pid = wait_until(lambda: pid_file.exists() and pid_file.read_text().strip(), "the browser tool")
    return run, int(pid)


@system.needs("background browser")
def test_a_browser_tool_that_does_not_exit_does_not_block_the_launcher(suite):
    run, browser = start_with_lasting_browser(suite)
    old = suite.kill("receiver")
    suite.wait_for_restart("receiver", old)
    run.signal(signal.SIGINT)
    assert run.wait_for_process() == 0
    assert not system.has_ended(browser)
    os.kill(browser, signal.SIGKILL)
    run.wait()


@system.needs("background browser")
def test_the_browser_cannot_take_the_terminal_and_survives_it(suite):
    run, browser = start_with_lasting_browser(suite, terminal="all")
    assert os.getsid(browser) == browser
    assert psutil.Process(browser).terminal() is None
    streams = system.descriptors(browser)
    assert streams[0] == "/dev/null"
    assert streams[1].startswith("pipe:")
    assert streams[2] == system.descriptors(run.pid)[2]
    run.wait_for("output of the browser")
    run.hang_up()
    assert run.wait_for_process() == 0
    assert not system.has_ended(browser)
    os.kill(browser, signal.SIGKILL)
    wait_until(lambda: system.has_ended(browser), "the end of the browser tool")


def test_the_alerts_command_line(suite):
    message = run_without_hub(suite)
    (call,) = suite.calls("osascript")
    assert call == [
        b"-e",
        b'display alert "Tandrel" message "' + message + b'" as critical',
    ]
    assert [suite.calls(tool) for tool in ALERT_TOOLS] == [[], [], []]


@pytest.mark.parametrize("name", SPECIAL_NAMES)
def test_special_characters_reach_the_alert_unchanged(suite_in, name):
    suite = suite_in(name)
    message = run_without_hub(suite)
    script = console.alert_script(os.fsdecode(message))
    assert suite.calls("osascript") == [[b"-e", os.fsencode(script)]]
    assert files_of_injected_commands(suite) == []


def test_quotes_and_backslashes_are_escaped_by_one_backslash_each(suite_in):
    suite = suite_in('a"b\\c')
    run_without_hub(suite)
    script = suite.calls("osascript")[0][1]
    assert b'/a\\"b\\\\c/td_hub' in script


@pytest.mark.parametrize("name", NAMES_WITH_A_SINGLE_QUOTE)
def test_a_message_with_a_single_quote_gets_no_alert_and_no_shell(suite_in, name):
    suite = suite_in(name)
    run_without_hub(suite)
    for tool in ("osascript", *ALERT_TOOLS):
        assert suite.calls(tool) == []
    assert files_of_injected_commands(suite) == []


@pytest.mark.parametrize("name", NAMES_WITH_A_SINGLE_QUOTE)
def test_a_message_with_a_single_quote_gets_no_other_alert_either(suite_in, name):
    suite = suite_in(name)
    environment = suite.sealed_environment("touch")
    for tool in ALERT_TOOLS:
        suite.tool(tool)
    run_without_hub(suite, environment)
    assert [suite.calls(tool) for tool in ALERT_TOOLS] == [[], [], []]
    assert files_of_injected_commands(suite) == []


@system.needs("alert tools")
@pytest.mark.parametrize(
    "name, present",
    [
        ("suite", ["zenity", "kdialog", "xmessage"]),
        ("Größe – 音", ["zenity", "kdialog", "xmessage"]),
        (SHELL_COMMANDS, ["zenity", "kdialog", "xmessage"]),
        (os.fsdecode(b"\xff\xfe"), ["kdialog", "xmessage"]),
        ("-dash !! * ?", ["xmessage"]),
    ],
)
def test_without_osascript_the_first_alert_tool_found_is_used(suite_in, name, present):
    suite = suite_in(name)
    environment = suite.sealed_environment("touch")
    for tool in present:
        suite.tool(tool)
    message = run_without_hub(suite, environment)
    options = [option.encode() for option in ALERT_TOOLS[present[0]]]
    assert suite.calls(present[0]) == [[*options, message]]
    assert [suite.calls(tool) for tool in present[1:]] == [[]] * (len(present) - 1)
    assert files_of_injected_commands(suite) == []


def test_without_any_alert_tool_the_message_is_on_the_terminal(suite):
    run_without_hub(suite, suite.sealed_environment())


@system.needs("alert tools")
def test_an_osascript_that_is_not_executable_is_skipped(suite):
    environment = suite.sealed_environment()
    suite.tool("osascript").chmod(0o644)
    suite.tool("kdialog")
    run_without_hub(suite, environment)
    assert len(suite.calls("kdialog")) == 1
    assert suite.calls("osascript") == []


@system.needs("alert tools")
@pytest.mark.parametrize("path", ["/nonexistent::/nonexistent", ":/nonexistent", "/nonexistent:"])
def test_an_empty_path_entry_means_the_working_folder(suite, path):
    suite.script("zenity", '#!/bin/sh\n: > "$0.shown"\n')
    run_without_hub(suite, {**suite.environment, "PATH": path})
    assert (suite.folder / "zenity.shown").exists()


@pytest.mark.parametrize("end", ["exit 0", "exit 1", "kill -KILL $$", "kill -INT $$"])
def test_an_alert_tools_output_and_exit_status_are_ignored(suite, end):
    suite.tool("osascript", f'#!/bin/sh\n: > "$0.shown"\necho noise\necho noise >&2\n{end}\n')
    run_without_hub(suite)
    assert (suite.bin / "osascript.shown").exists()


def test_the_message_is_printed_before_the_alert_which_the_run_waits_for(suite):
    suite.tool("osascript", '#!/bin/sh\nread -r _ < "$0.dismiss"\n')
    os.mkfifo(suite.bin / "osascript.dismiss")
    suite.component("hub").unlink()
    run = suite.start()
    run.wait_for("need to stay in the same folder.\n", stream="errors")
    with open(suite.bin / "osascript.dismiss", "w") as dismiss:  # opens once the alert is there
        assert run.process.poll() is None
        dismiss.write("\n")
    assert run.wait() == 1


def test_ctrl_c_at_the_terminal_dismisses_the_alert(suite):
    suite.tool("osascript", '#!/bin/sh\necho $$ > "$0.pid"\nexec sleep 600\n')
    suite.component("hub").unlink()
    run = suite.start(terminal="all")
    pid_file = suite.bin / "osascript.pid"
    pid = wait_until(lambda: pid_file.exists() and pid_file.read_text().strip(), "the alert")
    run.interrupt()
    assert run.wait() == 1
    assert system.is_gone(int(pid))
