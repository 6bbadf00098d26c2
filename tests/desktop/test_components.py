"""The menu's commands, checked by what the components record."""

from signal import SIGKILL

from components import COMPONENTS, STOP_ORDER
from console import RESTARTING
from deadline import wait_until


def wait_for_starts(running, times):
    """Waits until every component has started `times` times; the last starts, by process id."""

    def all_there():
        starts = [row for row in running.suite.events("start")]
        return starts if len(starts) == times * len(COMPONENTS) else None

    rows = wait_until(all_there, f"start number {times} of every component")
    return sorted((row["pid"], row["program"]) for row in rows[-len(COMPONENTS):])


def programs(running, event):
    return [row["program"] for row in running.suite.events(event)]


def test_stop_and_start_of_a_component(running):
    running.menu_bar.choose("sender", "stop")
    wait_until(lambda: programs(running, "stop") == ["td_sender"], "the sender's stop")
    wait_until(lambda: not running.suite.processes("sender"), "the sender's end")
    running.menu_bar.choose("sender", "start")
    wait_until(lambda: running.suite.processes("sender"), "the sender's start")
    assert running.menu_bar.states()["sender"] == "green"
    assert programs(running, "start").count("td_sender") == 2


def test_restart_of_a_component(running):
    before = running.suite.process("receiver").pid
    running.menu_bar.choose("receiver", "restart")
    running.suite.wait_for_restart("receiver", before)
    assert programs(running, "stop") == ["td_receiver"]
    assert running.menu_bar.states()["header"] == "green"


def test_after_copy_a_killed_component_is_still_restarted(running):
    running.menu_bar.choose("copy")
    wait_until(
        lambda: running.clipboard() == running.dashboard_address(), "the address on the clipboard"
    )
    before = running.suite.kill("receiver", SIGKILL)
    running.suite.wait_for_restart("receiver", before)
    assert RESTARTING.format("receiver").encode() in running.run.errors


def test_open_dashboard_hands_the_address_to_the_browser(running):
    running.suite.forget_calls("open")
    running.menu_bar.choose("open")
    calls = wait_until(lambda: running.suite.calls("open"), "the browser")
    assert calls == [[running.dashboard_address().encode()]]


def test_all_components_are_stopped_started_and_restarted_in_order(running):
    start_order = [f"td_{name}" for name in COMPONENTS]
    running.menu_bar.choose("all", "stop")
    wait_until(lambda: not any(map(running.suite.processes, COMPONENTS)), "the end of them all")
    assert programs(running, "stop") == STOP_ORDER
    assert set(running.menu_bar.states().values()) == {"orange", "red"}

    running.menu_bar.choose("all", "start")
    second = wait_for_starts(running, 2)
    assert [program for _, program in second] == start_order
    assert set(running.menu_bar.states().values()) == {"green"}

    running.menu_bar.choose("all", "restart")
    wait_for_starts(running, 3)
    assert programs(running, "stop") == 2 * STOP_ORDER
    assert set(running.menu_bar.states().values()) == {"green"}
    assert b"Tandrel: restarting" not in running.run.errors
