"""Where the interface cannot be shown, the launcher goes on as in a terminal."""

from pathlib import Path
from signal import SIGTERM

import psutil
import pytest
from component_events import kill, start_recording, stops, wait_for_components, wait_for_start
from components import COMPONENTS, STOP_ORDER
from console import RESTARTING, UNAVAILABLE
from desktop import check_stopped_once

NOT_AVAILABLE = UNAVAILABLE.partition("{}")[0]
BROKEN = {
    "no such display": ({"DISPLAY": ":nothing"}, ":nothing"),
    "no such compositor": ({"DISPLAY": "", "WAYLAND_DISPLAY": "nothing"}, "wl_display"),
    "no such platform": ({"QT_QPA_PLATFORM": "nothing"}, '"nothing"'),
}


def status(pid, *fields):
    """Fields of /proc/PID/status, as text."""
    rows = dict(row.split(":\t") for row in Path(f"/proc/{pid}/status").read_text().splitlines())
    return [rows[field] for field in fields]


def signals(pid):
    """The signals that a process blocks in its main thread, ignores and handles."""
    return status(pid, "SigBlk", "SigIgn", "SigCgt")


def signals_without_display(desktop):
    """Those of a run that finds no display. Leaves no record of that run."""
    run = start_recording(desktop.suite, terminal=None)
    kill(desktop.suite, "sender")
    wait_for_start(desktop.suite, "sender", 2)  # it is supervised
    found = signals(run.pid)
    assert run.stop(SIGTERM) == 0
    (desktop.suite.folder / "events.jsonl").unlink()
    return found


@pytest.mark.parametrize("changes, named", BROKEN.values(), ids=BROKEN)
def test_the_run_goes_on_as_in_a_terminal(desktop, changes, named):
    suite = desktop.suite
    wanted = signals_without_display(desktop)
    run = suite.start_up(
        "--no-browser", terminal=None, environment={**desktop.screen.environment, **changes}
    )
    run.wait_for(NOT_AVAILABLE, "errors")
    wait_for_components(suite)
    kill(suite, "receiver")
    wait_for_start(suite, "receiver", 2)  # it is supervised
    assert signals(run.pid) == wanted
    assert desktop.menu_bar.windows() == {}
    children = psutil.Process(run.pid).children(recursive=True)
    assert {child.name() for child in children} == {f"td_{name}" for name in COMPONENTS}
    assert run.stop(SIGTERM) == 0
    check_stopped_once(run, suite)
    assert stops(suite) == STOP_ORDER
    reason, restarting = run.errors.decode().splitlines(keepends=True)
    assert reason.startswith(NOT_AVAILABLE) and named in reason
    assert restarting == RESTARTING.format("receiver")
