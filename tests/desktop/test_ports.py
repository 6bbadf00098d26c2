"""The ports dialog, applied to a running suite."""

import socket

import pytest
from components import client_arguments, hub_arguments
from deadline import wait_until
from dialogs import Dialog, PortsDialog


def last_arguments(running):
    """What each component was last started with, from its own record."""
    return {event["program"]: event["argv"][1:] for event in running.suite.events("start")}


def saved_ports(running):
    saved = running.saved_settings()
    return saved.get("http_port"), saved.get("udp_port")


def check_and_close_warning(running, message):
    """Checks that a warning shows the message, and closes it."""
    warning = Dialog(running, "Could not change the ports")
    assert warning.text[:2] == ["Could not change the ports", message]
    warning.answer("Return")


def test_other_ports_are_applied_and_saved(running):
    address = running.dashboard_address()
    http, udp = running.suite.ports.free(), running.suite.ports.free()
    PortsDialog(running).apply(http, udp)
    wait_until(lambda: saved_ports(running) == (http, udp), "the settings file")
    expected = {
        "td_hub": hub_arguments(http, udp),
        "td_receiver": client_arguments(udp),
        "td_sender": client_arguments(udp),
    }
    wait_until(lambda: last_arguments(running) == expected, "the components on the new ports")
    assert set(running.menu_bar.states().values()) == {"running"}

    # The address in the menu stays that of the start.
    running.menu_bar.choose("Copy")
    wait_until(lambda: running.clipboard() == address, "the address on the clipboard")
    assert address in running.menu_bar.open().rows
    running.menu_bar.dismiss()

    again = PortsDialog(running)
    assert again.ports() == [str(http), str(udp)]
    again.answer("Escape")


def test_ports_can_be_typed_without_the_mouse(running):
    http, udp = running.suite.ports.free(), running.suite.ports.free()
    dialog = PortsDialog(running)
    running.screen.press("Tab")
    running.screen.type(str(http))
    running.screen.press("Tab")
    running.screen.type(str(udp))
    dialog.answer("Return")
    wait_until(lambda: saved_ports(running) == (http, udp), "the settings file")


def test_a_taken_port_is_shown_in_a_warning(running):
    with socket.create_server(("", 0)) as taken:
        port = taken.getsockname()[1]
        PortsDialog(running).apply(port, running.suite.udp)
        check_and_close_warning(
            running,
            f"The hub would not start on port {port}. That port may be in use. Pick another.",
        )
    states = running.menu_bar.states()
    assert states["Receiver"] == states["Sender"] == "stopped"
    assert saved_ports(running) == (None, None)


def test_a_refused_port_changes_nothing(running):
    before = running.pids()
    PortsDialog(running).apply(80, running.suite.udp)
    check_and_close_warning(
        running, "Ports below 1024 need administrator privileges; pick higher ones."
    )
    assert running.pids() == before
    assert saved_ports(running) == (None, None)


@pytest.mark.parametrize("number", [2**32 + 28004, -(2**32) + 28004, 10**30])
def test_a_number_beyond_32_bits_is_out_of_range(running, number):
    before = running.pids()
    PortsDialog(running).apply(number, running.suite.udp)
    check_and_close_warning(running, "Ports must be between 1 and 65535.")
    assert running.pids() == before
    assert saved_ports(running) == (None, None)


def test_cancel_changes_nothing(running):
    before = running.pids()
    dialog = PortsDialog(running)
    dialog.enter("Dashboard port", running.suite.ports.free())
    dialog.answer("Escape")
    assert set(running.menu_bar.states().values()) == {"running"}
    assert running.pids() == before
    assert saved_ports(running) == (None, None)
