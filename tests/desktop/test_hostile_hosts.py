"""Panels that ask nonsense, ask too much, ask while the launcher is busy, or take no icon."""

import pytest
from bus import call, connect
from component_events import starts, stops, wait_for_start
from components import COMPONENTS, STOP_ORDER
from deadline import wait_until
from desktop import check_stopped_once
from dialogs import Dialog
from gi.repository import GLib
from host import ITEM, MENU, NO_DATA, PANEL, PROPERTIES, WHOLE_MENU, clicked
from hostile import Caller, RefusingHost
from test_components import ALL_RUNNING
from test_panel import wait_until_in
from test_tray import FLOATING, wait_until_at

FLOOD = 5000
NO_ITEMS = (-(2**31), -1, 31, 2**31 - 1)
ERROR = "org.freedesktop.DBus.Error."


@pytest.fixture
def caller(in_panel):
    """A program beside the panel, which calls what the icon exports."""
    desktop, host = in_panel
    made = Caller(desktop.bus, host.icon())
    yield made
    made.close()


def check_never_two_hubs(desktop):
    """Each hub has ended before the next one started."""
    running = set()
    for row in desktop.suite.events(program="td_hub"):
        if row["event"] == "start":
            assert not running
            running.add(row["pid"])
        elif row["event"] == "exit":
            running.discard(row["pid"])  # one stopped at once records no start


def check_quits(desktop, caller, order=STOP_ORDER, is_flooded=False):
    """Quit stops in order everything that runs."""
    answer = caller.call(*clicked(caller.row("Quit")))
    # After a flood the launcher may end before all its answers are on their way.
    assert answer == () or (is_flooded and answer == f"{ERROR}NoReply")
    assert desktop.run.wait() == 0
    assert stops(desktop.suite)[-len(order) :] == order
    check_stopped_once(desktop.run, desktop.suite)


def test_nonsense_is_answered_and_changes_nothing(in_panel, caller):
    desktop, host = in_panel
    before = desktop.pids()
    rows = [row.title for row in caller.rows()]
    for number in NO_ITEMS:
        for event in ("clicked", "opened", "closed", "hovered", "nonsense", ""):
            assert caller.call("Event", "(isvu)", number, event, NO_DATA, 0) == ()
        assert caller.call("EventGroup", "(a(isvu))", [(number, "clicked", NO_DATA, 0)]) == ([],)
        assert caller.call("AboutToShow", "(i)", number) == (False,)
        assert caller.call("AboutToShowGroup", "(ai)", [number]) == ([], [])
        assert caller.call("GetLayout", "(iias)", number, -1, [])[1] == (number, {}, [])
        assert caller.call("GetGroupProperties", "(aias)", [number], []) == ([],)
    for interface, method, kind, *arguments in (
        (MENU, "Event", "(ss)", "17", "clicked"),
        (MENU, "Event", "()"),
        (MENU, "EventGroup", "(as)", ["clicked"]),
        (MENU, "AboutToShow", "(s)", "0"),
        (MENU, "GetLayout", "(s)", "0"),
        (MENU, "Nonsense", "()"),
        (ITEM, "Activate", "(ss)", "0", "0"),
        (ITEM, "ContextMenu", "()"),
        (PROPERTIES, "Get", "(ss)", ITEM, "Nonsense"),
        (PROPERTIES, "GetAll", "(s)", "Nonsense"),
        (PROPERTIES, "Set", "(ssv)", ITEM, "Title", NO_DATA),
    ):
        answer = caller.call(method, kind, *arguments, interface=interface)
        assert isinstance(answer, str) and answer.startswith(ERROR), (method, answer)
    assert [row.title for row in caller.rows()] == rows
    assert host.icon().get("Title") == "Tandrel"
    assert desktop.pids() == before and stops(desktop.suite) == []
    assert host.icon().states() == ALL_RUNNING
    check_quits(desktop, caller)


QUESTIONS = [WHOLE_MENU, ("AboutToShow", "(i)", 0), ("Event", "(isvu)", 0, "opened", NO_DATA, 0)]


def flood(*calls):
    return [calls[number % len(calls)] for number in range(FLOOD)]


@pytest.mark.parametrize("reads", [True, False])
def test_a_flood_of_questions_is_survived(in_panel, caller, reads):
    desktop, host = in_panel
    if reads:
        caller.send(*flood(*QUESTIONS, *[QUESTIONS[1]] * 7))
        wait_until(lambda: caller.answered() == FLOOD, "all answers")
        check_quits(desktop, caller, is_flooded=True)
    else:
        with caller.send_unread(*flood(*QUESTIONS, *[QUESTIONS[1]] * 7)):
            assert host.icon().states() == ALL_RUNNING
            check_quits(desktop, caller, is_flooded=True)


def test_a_choice_of_a_program_that_has_gone_is_still_one(in_panel, caller):
    desktop, host = in_panel
    caller.send_unread(clicked(caller.row("Sender", "Stop")), WHOLE_MENU, WHOLE_MENU).close()
    wait_until(lambda: stops(desktop.suite) == ["td_sender"], "the sender's stop")
    assert host.icon().states() == {**ALL_RUNNING, "Sender": "stopped"}


def test_a_flood_of_choices_restarts_one_after_the_other_and_quit_still_works(in_panel, caller):
    desktop, _ = in_panel
    restart = clicked(caller.row("Hub", "Restart"))
    caller.send(*[restart] * 10)
    check_quits(desktop, caller, is_flooded=True)
    assert len(starts(desktop.suite, "hub")) >= 2  # one stopped at once records no start
    check_never_two_hubs(desktop)


def test_a_panel_that_announces_no_opening_sees_what_was_chosen(in_panel, caller):
    desktop, _ = in_panel
    for count in (2, 3):
        for choice, state in (("Stop", "stopped"), ("Start", "running")):
            assert caller.call(*clicked(caller.row("Hub", choice))) == ()
            wait_until(lambda wanted=f"Hub   {state}": caller.row("Hub").title == wanted, state)
            enabled = [row.title for row in caller.row("Hub").rows if row.enabled]
            assert enabled == (["Start"] if state == "stopped" else ["Stop", "Restart"])
        wait_for_start(desktop.suite, "hub", count)


def test_the_preference_is_switched_by_each_choice(in_panel, caller):
    desktop, _ = in_panel
    row = caller.row("Open Dashboard at Launch")
    caller.send(*[clicked(row)] * 7)
    check_quits(desktop, caller, is_flooded=True)
    assert desktop.saved_settings()["open_browser"] is False


def test_calls_made_during_a_long_stop_are_answered_after_it(caller, busy):
    caller.send(*QUESTIONS * 10)
    assert busy.suite.processes("sender")  # still being stopped
    titles = {row.title for row in caller.rows()}
    wait_until(lambda: caller.answered() == 10 * len(QUESTIONS), "all answers")
    assert {"Sender   stopped", "Hub   running"} <= titles


def test_calls_made_during_a_change_of_the_ports_are_answered_after_it(in_panel, caller):
    desktop, host = in_panel
    desktop.suite.set_behaviour("hub", "answer-after=2000 record=events.jsonl")
    host.icon().choose("Settings")
    dialog = Dialog(desktop, "Tandrel Settings")
    for _ in range(2):
        desktop.screen.press("Tab")
        desktop.screen.type(str(desktop.suite.ports.free()))
    dialog.answer("Return")
    wait_until(lambda: len(starts(desktop.suite, "hub")) == 2, "the hub on its new ports")
    caller.send(*QUESTIONS * 10)
    assert "http_port" not in desktop.saved_settings()  # still being changed
    wait_until(lambda: caller.answered() == 10 * len(QUESTIONS), "all answers")
    assert host.icon().states() == ALL_RUNNING


def test_two_panels_that_announce_themselves_twice_show_one_icon(in_panel):
    desktop, host = in_panel
    host.arrive()
    host.arrive()
    panels = [Caller(desktop.bus, host.icon()) for _ in range(2)]
    rows = [panel.row("Hub", "Restart") for panel in panels]
    for panel, row in zip(panels, rows):
        panel.send(*[clicked(row)] * 3)
    wait_until(lambda: len(starts(desktop.suite, "hub")) > 1, "the hub's restart")
    assert len(host.icons()) == 1
    wait_until_in(host, desktop)
    check_quits(desktop, panels[0])
    check_never_two_hubs(desktop)
    for panel in panels:
        panel.close()


def test_the_icon_needs_no_name_of_its_own_on_the_bus(desktop):
    host = desktop.host(silent_at=[PANEL])
    run = desktop.launch(*desktop.suite.ports_options)
    host.wait_until_asked(PANEL)
    thief, bus = connect(desktop.bus.address), "org.freedesktop.DBus"
    for number in range(1, 10):
        name = GLib.Variant("(su)", (f"{ITEM}-{run.pid}-{number}", 4))
        assert call(thief, bus, "/org/freedesktop/DBus", bus, "RequestName", name) == (1,)
    host.answer()
    assert wait_until_in(host, desktop).states() == ALL_RUNNING
    host.icon().choose("Quit")
    assert run.wait() == 0
    assert run.errors == b""
    thief.close_sync(None)


def test_a_panel_that_refuses_the_icon_hides_it_no_longer_than_it_lives(desktop):
    host = RefusingHost(desktop.bus)
    desktop.suite.record(*COMPONENTS)
    run = desktop.launch(*desktop.suite.ports_options)
    host.wait_until_asked("RegisterStatusNotifierItem")
    run.wait_for("no place", "errors")
    host.die()
    wait_until_at(desktop, FLOATING)
    assert desktop.quit() == 0
    assert stops(desktop.suite) == STOP_ORDER
