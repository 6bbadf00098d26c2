"""What the launcher should print and pass to external tools."""

import ipaddress
import socket

import psutil
import system

USAGE = """\
Tandrel — all-in-one launcher

  Tandrel                      start the hub, a receiver and a sender, then
                                open the dashboard in your browser

Options for that mode:
  --no-sender                   don't offer this machine's audio (hub +
                                receiver only)
  --no-receiver                 don't play audio on this machine
  --no-browser                  don't open a browser this run
  --browser                     do open one, overriding a saved preference
                                (the menu's "Open Dashboard at Launch" sets
                                 the default, which persists)
  --http-port <N>               dashboard port (default 4466)
  --udp-port <N>                hub control port (default 4465)
  --verbose                     let the children draw their own terminal UIs

Running one component, exactly as the separate binaries do:
  Tandrel hub [args...]              -> td_hub
  Tandrel sender [args...]           -> td_sender
  Tandrel receiver [args...]         -> td_receiver
  Tandrel align [args...]            -> td_align

Those forms pass every argument straight through, so existing scripts and
service units keep working. The individual binaries also still ship.
""".encode()

VERSION = "1.4.4+412"  # a literal: reading the file VERSION would prove nothing
TITLE = f"\n\x1b[1mTandrel\x1b[0m \x1b[2m{VERSION}\x1b[0m\n".encode()
READY = "Ctrl-C here stops everything."  # the last line of a start-up
STOPPED = b"\nTandrel: stopping...\nTandrel: stopped.\n"
RESTARTING = "Tandrel: restarting the {}...\n"
NOT_RESTARTED = "Tandrel: could not restart the {}\n"
NOT_STARTED = "Tandrel: could not start the {}\n"
UNAVAILABLE = "Tandrel: the menu-bar interface is not available: {}.\n"
LEFT_STOPPED = "Tandrel: the {} keeps exiting; leaving it stopped.\n"


def restarts_until_left_stopped(name):
    """All messages about a component that keeps exiting, until it is left stopped."""
    return RESTARTING.format(name) * 5 + LEFT_STOPPED.format(name)


def announcement(url, running="hub, receiver, sender", no_sender=False, verbose=False):
    """What a run prints after the title, once the hub has answered."""
    text = f"\n  Dashboard  : \x1b[1;36m{url}\x1b[0m\n  Running    : {running}\n"
    if no_sender:
        text += "  \x1b[2m(--no-sender: this machine is not offering its audio)\x1b[0m\n"
    text += "\n  \x1b[2mOpen the dashboard to choose devices and route audio.\x1b[0m\n"
    text += "  \x1b[2mCtrl-C here stops everything.\x1b[0m\n\n"
    if verbose:
        text += (
            "\x1b[2m  (--verbose: the components are drawing their own terminal UIs "
            "over each other)\x1b[0m\n\n"
        )
    return text.encode()


def hub_missing(path):
    """The message of a run whose hub is missing."""
    return (
        f"Cannot start the hub.\n\nExpected td_hub next to this program, at:\n{path}"
        "\n\nAll four binaries need to stay in the same folder."
    )


def hub_silent(port):
    """The message of a run whose hub did not answer."""
    return (
        f"The hub did not start on port {port}.\n\n"
        "Another copy of Tandrel may already be running, or that port is in use."
    )


def component_missing(name, path):
    """The message of a pass-through run whose component is missing."""
    return (
        f"Tandrel: cannot start td_{name}\n"
        "              expected it next to this program, at:\n"
        f"                {path}\n"
    )


def probe_arguments(port):
    """The arguments with which curl is called to probe the hub, as bytes."""
    url = f"http://127.0.0.1:{port}/api/health"
    return [b"-s", b"-m", b"2", b"-o", b"/dev/null", url.encode()]


def alert_script(message):
    """The script with which `osascript` is called to show a message."""
    escaped = message.replace("\\", "\\\\").replace('"', '\\"')
    return f'display alert "Tandrel" message "{escaped}" as critical'


def lan_address():
    """The address that the launcher should choose, according to psutil."""
    networks = [ipaddress.ip_network(n) for n in ("192.168.0.0/16", "10.0.0.0/8", "172.16.0.0/12")]
    private, other = [], []
    for name, addresses in psutil.net_if_addrs().items():
        for entry in addresses:
            if entry.family != socket.AF_INET or not system.is_up(name):
                continue
            address = ipaddress.ip_address(entry.address)
            if address.is_loopback or address.is_link_local:
                continue
            is_private = any(address in network for network in networks)
            (private if is_private else other).append(entry.address)
    return (private + other + ["127.0.0.1"])[0]


def dashboard_url(port):
    return f"http://{lan_address()}:{port}/"
