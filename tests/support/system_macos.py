"""What the tests must know about macOS; see system_linux for Linux, and for what the functions do.

Everything here except the network interfaces works on Linux too.
"""

import os
import subprocess

import psutil

MISSING = {
    "alert tools": "on a Mac the launcher uses only osascript",
    "any file name": "a Mac's file system allows only names in UTF-8",
    "browser tools": "on a Mac the launcher uses only open",
    "background browser": "on a Mac the launcher waits for open, which starts the browser",
    "end with parent": "macOS does not signal a process whose parent has ended",
    "interface module": "on a Mac the interface is part of the launcher",
    "replaced calls": "the test uses LD_PRELOAD, which macOS does not have",
    "limits of others": "macOS sets a limit only for the process that asks",
    "signals of others": "macOS does not show the signal mask and actions of another process",
    "thread limit": "macOS cannot keep one process from making threads",
}

TEMPORARY_FOLDER = "/tmp"  # the default one makes the paths of sockets too long

IS_ZOMBIE = 'case $(ps -o state= -p "$pid") in Z*) ;; *) false ;; esac'

# Linked with the scripted interface; the launcher that users run would show its icon.
LAUNCHER = "{modules}/launcher"


def install_interface(modules, folder, name=None):
    """Does nothing: the interface is linked in."""


def path_of_launcher(path, folder):
    """The dynamic loader makes the path absolute and changes nothing else."""
    return path if path.startswith("/") else f"{os.path.realpath(folder)}/{path}"


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
    # psutil calls a sleeping process "running" on a Mac.
    return _status(pid) in (psutil.STATUS_RUNNING, psutil.STATUS_SLEEPING)


def descriptors(pid):
    """The name is empty for what is not a file, as in the components' events."""
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
