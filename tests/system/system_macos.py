"""What the tests have to know of macOS. See system_linux for the same of Linux.

Everything here but the network interfaces works on Linux too.
"""

import os
import subprocess

import psutil

MISSING = {
    "alert tools": "the launcher uses osascript alone on a Mac",
    "any file name": "a Mac's file system takes no name that is not UTF-8",
    "browser tools": "the launcher uses open alone on a Mac",
    "background browser": "open, which the launcher waits for on a Mac, starts the browser itself",
    "end with parent": "macOS does not signal a process whose parent has ended",
    "interface module": "on a Mac the interface is part of the launcher",
    "replaced calls": "macOS does not let one program replace what another calls",
    "limits of others": "macOS sets a limit only for the process that asks",
    "signals of others": "macOS does not tell the signal mask and actions of another process",
    "thread limit": "macOS cannot keep one process from making threads",
}

TEMPORARY_FOLDER = "/tmp"  # in the usual one the path of a local socket would be too long

IS_ZOMBIE = 'case $(ps -o state= -p "$pid") in Z*) ;; *) false ;; esac'

# The launcher that people run would show its icon: this one is linked with the scripted interface.
LAUNCHER = "{modules}/launcher"


def install_interface(modules, folder, name=None):
    """Nothing to do: the launcher has it."""


def path_of_launcher(way, folder):
    """The dynamic loader makes a path absolute, and does nothing else with it."""
    return way if way.startswith("/") else f"{os.path.realpath(folder)}/{way}"


def _status(pid):
    try:
        return psutil.Process(pid).status()
    except psutil.ZombieProcess:
        return psutil.STATUS_ZOMBIE
    except psutil.NoSuchProcess:
        return None


def is_gone(pid):
    return _status(pid) is None


def has_ended(pid):
    return _status(pid) in (None, psutil.STATUS_ZOMBIE)


def is_suspended(pid):
    return _status(pid) == psutil.STATUS_STOPPED


def is_waiting(pid):
    # The status of one that waits is "running".
    return _status(pid) in (psutil.STATUS_RUNNING, psutil.STATUS_SLEEPING)


def descriptors(pid):
    """What is not open on a file has an empty name, as for the components."""
    command = ["lsof", "-w", "-n", "-P", "-a", "-p", str(pid), "-d", "0-9999", "-F", "fn"]
    listed = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True)
    return descriptors_of(listed.stdout)


def descriptors_of(listing):
    """The descriptors in the output of `lsof -F fn`: a line "f<number>", then "n<name>"."""
    found = {}
    for line in listing.splitlines():
        if line[0] == "f":
            number = int(line[1:])
            found[number] = ""
        elif line[0] == "n" and line[1:2] == "/":
            found[number] = line[1:]
    return found


def pid_count():
    return 99999


def is_up(interface):
    return psutil.net_if_stats()[interface].isup
