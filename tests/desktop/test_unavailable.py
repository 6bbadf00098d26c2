"""Where the interface cannot be shown, the launcher goes on as in a terminal."""

from pathlib import Path
from signal import SIGTERM

import psutil
import pytest
from component_events import kill, start_recording, stops, wait_for_components, wait_for_start
from components import COMPONENTS, STOP_ORDER
from console import RESTARTING, STOPPED, UNAVAILABLE
from deadline import wait_until
from preload import preloaded

NO_APPLICATION = UNAVAILABLE.format("GNUstep cannot make the application")
BACKEND = "Bundles/libgnustep-back-029.bundle"
LACKING = {
    "runModal": "-[NSAlert runModal]",  # replaced when the module is loaded
    "_pbs": "+[NSPasteboard _pbs]",
    "_connect": "-[NSDistributedNotificationCenter _connect]",  # before the application is made
}


def configured(folder, preferences=None, system=None):
    """The environment of a GNUstep with its own preferences and, if given, its own libraries."""
    lines = [f"GNUSTEP_USER_DEFAULTS_DIR={folder / 'preferences'}"]
    if system:
        domains = ("SYSTEM", "NETWORK", "LOCAL")
        lines += [f"GNUSTEP_{domain}_LIBRARY={system}" for domain in domains]
        lines.append(f"GNUSTEP_USER_DIR_LIBRARY={system}")
    if preferences:
        (folder / "preferences").mkdir()
        (folder / "preferences" / "NSGlobalDomain.plist").write_text(preferences)
    path = folder / "GNUstep.conf"
    path.write_text("\n".join(lines) + "\n")
    path.chmod(0o600)
    return {"GNUSTEP_CONFIG_FILE": str(path)}


def no_backend(folder):
    (folder / "Bundles").mkdir()
    return configured(folder, system=folder)


def broken_backend(folder):
    resources = folder / BACKEND / "Resources"
    resources.mkdir(parents=True)
    (resources / "Info-gnustep.plist").write_text("{ NSExecutable = backend; }")
    (folder / BACKEND / "backend").touch()
    return configured(folder, system=folder)


def another_backend_preferred(folder):
    return configured(folder, preferences="{ GSBackend = nosuch; }")


def display_not_opened(folder):
    """The display answers, but cannot be opened for the application."""
    return preloaded(folder, TD_DISPLAYS="0")


def status(pid, *fields):
    """Fields of /proc/PID/status, as text."""
    rows = dict(row.split(":\t") for row in Path(f"/proc/{pid}/status").read_text().splitlines())
    return [rows[field] for field in fields]


def signal_actions(pid):
    """The signals that a process ignores, and those that it handles."""
    return status(pid, "SigIgn", "SigCgt")


def wait_until_nothing_is_blocked(pid):
    """All signals are blocked in the main thread for the moment in which it starts a component."""
    wait_until(lambda: int(status(pid, "SigBlk")[0], 16) == 0, "an empty signal mask")


def actions_without_interface(desktop):
    """The signal actions of a run that finds no display. Leaves no record of that run."""
    run = start_recording(desktop.suite, terminal=None)
    kill(desktop.suite, "sender")
    wait_for_start(desktop.suite, "sender", 2)  # it is supervised
    found = signal_actions(run.pid)
    wait_until_nothing_is_blocked(run.pid)
    assert run.stop(SIGTERM) == 0
    (desktop.suite.folder / "events.jsonl").unlink()
    return found


def check_goes_on_as_in_a_terminal(desktop, changes, reason):
    suite = desktop.suite
    wanted = actions_without_interface(desktop)
    run = suite.start_up(
        "--no-browser", terminal=None, environment={**desktop.screen.environment, **changes}
    )
    run.wait_for(reason, "errors")
    wait_for_components(suite)
    kill(suite, "receiver")
    wait_for_start(suite, "receiver", 2)  # it is supervised
    assert signal_actions(run.pid) == wanted
    wait_until_nothing_is_blocked(run.pid)
    assert desktop.menu_bar.windows() == {}
    children = psutil.Process(run.pid).children(recursive=True)
    assert {child.name() for child in children} == {f"td_{name}" for name in COMPONENTS}
    assert run.stop(SIGTERM) == 0
    assert run.output.endswith(STOPPED) and run.output.count(STOPPED) == 1
    assert stops(suite) == STOP_ORDER
    assert run.errors.decode().count(reason) == 1
    assert run.errors.decode().endswith(reason + RESTARTING.format("receiver"))


@pytest.mark.parametrize("selector", LACKING)
def test_a_method_is_missing(desktop, selector):
    changes = preloaded(desktop.suite.folder, TD_LACKING=selector)
    reason = UNAVAILABLE.format(f"this GNUstep has no {LACKING[selector]}")
    check_goes_on_as_in_a_terminal(desktop, changes, reason)


@pytest.mark.parametrize(
    "break_it", [no_backend, broken_backend, another_backend_preferred, display_not_opened]
)
def test_the_application_cannot_be_made(desktop, break_it):
    changes = break_it(desktop.suite.folder)
    check_goes_on_as_in_a_terminal(desktop, changes, NO_APPLICATION)


def test_a_preference_that_would_end_the_process_is_not_read(desktop):
    desktop.suite.record(*COMPONENTS)
    desktop.change(configured(desktop.suite.folder, preferences="{ GSContext = NoSuchContext; }"))
    desktop.start()
    assert set(desktop.menu_bar.states().values()) == {"green"}
    assert desktop.quit() == 0
