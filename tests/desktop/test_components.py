"""The menu's commands, checked by what the components record."""

from signal import SIGKILL

from components import COMPONENTS, STOP_ORDER
from console import RESTARTING, STOPPED
from deadline import wait_until

ALL_RUNNING = {"Hub": "running", "Receiver": "running", "Sender": "running"}


def wait_for_starts(desktop, times):
    """Waits until every component has started `times` times; the last starts, by process id."""

    def all_there():
        starts = desktop.suite.events("start")
        return starts if len(starts) == times * len(COMPONENTS) else None

    rows = wait_until(all_there, f"start number {times} of every component")
    return sorted((row["pid"], row["program"]) for row in rows[-len(COMPONENTS) :])


def programs(desktop, event):
    return [row["program"] for row in desktop.suite.events(event)]


def test_stop_and_start_of_a_component(shown):
    desktop, menu = shown
    assert menu.states() == ALL_RUNNING
    menu.choose("Sender", "Stop")
    wait_until(lambda: programs(desktop, "stop") == ["td_sender"], "the sender's stop")
    wait_until(lambda: not desktop.suite.processes("sender"), "the sender's end")
    assert menu.states() == {**ALL_RUNNING, "Sender": "stopped"}
    menu.choose("Sender", "Start")
    wait_until(lambda: programs(desktop, "start").count("td_sender") == 2, "the sender's start")
    assert menu.states() == ALL_RUNNING


def test_restart_of_a_component(shown):
    desktop, menu = shown
    before = desktop.suite.process("receiver").pid
    menu.choose("Receiver", "Restart")
    desktop.suite.wait_for_restart("receiver", before)
    assert programs(desktop, "stop") == ["td_receiver"]
    assert menu.states() == ALL_RUNNING


def test_after_copy_a_killed_component_is_still_restarted(shown):
    desktop, menu = shown
    menu.choose("Copy")
    address = desktop.dashboard_address()
    wait_until(lambda: desktop.clipboard() == address, "the address on the clipboard")
    before = desktop.suite.kill("receiver", SIGKILL)
    desktop.suite.wait_for_restart("receiver", before)
    desktop.run.wait_for(RESTARTING.format("receiver"), "errors")


def test_open_dashboard_hands_the_address_to_the_browser(shown):
    desktop, menu = shown
    call = [desktop.dashboard_address().encode()]
    wait_until(lambda: desktop.suite.calls("open") == [call], "the browser at launch")
    menu.choose("Open Dashboard")
    wait_until(lambda: desktop.suite.calls("open") == [call] * 2, "the browser")


def test_all_components_are_stopped_started_and_restarted_in_order(shown):
    desktop, menu = shown
    start_order = [f"td_{name}" for name in COMPONENTS]
    menu.choose("All Components", "Stop All")
    wait_until(lambda: not any(map(desktop.suite.processes, COMPONENTS)), "the end of them all")
    assert programs(desktop, "stop") == STOP_ORDER
    assert set(menu.states().values()) == {"stopped"}

    menu.choose("All Components", "Start All")
    second = wait_for_starts(desktop, 2)
    assert [program for _, program in second] == start_order
    assert menu.states() == ALL_RUNNING

    menu.choose("All Components", "Restart All")
    wait_for_starts(desktop, 3)
    assert programs(desktop, "stop") == 2 * STOP_ORDER
    assert menu.states() == ALL_RUNNING
    assert b"Tandrel: restarting" not in desktop.run.errors


def test_the_preference_is_switched_and_saved(shown):
    desktop, menu = shown
    for expected in (False, True):
        menu.choose("Open Dashboard at Launch")
        wait_until(lambda: desktop.saved_settings().get("open_browser") is expected, "the file")
    assert desktop.saved_settings() == {
        "http_port": desktop.suite.http,
        "udp_port": desktop.suite.udp,
        "open_browser": True,
    }


def test_quit_stops_everything_in_order(shown):
    desktop, menu = shown
    menu.choose("Quit")
    assert desktop.run.wait() == 0
    assert programs(desktop, "stop") == STOP_ORDER
    assert desktop.run.output.count(b"Tandrel: stopping...") == 1
    assert desktop.run.output.endswith(STOPPED)
    assert desktop.run.errors == b""
    assert not desktop.suite.processes()
