"""What the tests have to know of Linux. See system_macos for the same of a Mac."""

import os
import resource
import shutil
from pathlib import Path

MISSING = {}  # what this system lacks: the reason by ability

TEMPORARY_FOLDER = None  # Python's own choice

# A shell command that succeeds when process $pid has ended and has not been reaped yet.
IS_ZOMBIE = '{ read -r _ _ state _ < "/proc/$pid/stat" && [ "$state" = Z ]; }'

# Where the launcher is that is tested, in the folders of the build and of the scripted interface.
LAUNCHER = "{build}/launcher"


def install_interface(modules, folder, name="tdgui.so"):
    """Puts an interface where a launcher in that folder finds it."""
    shutil.copy2(modules / name, folder / "tdgui.so")


def path_of_launcher(way, folder):
    """The path that a launcher knows of itself when it is started as `way` in that folder."""
    return way


def _state(pid):
    """The letter that the kernel gives for a process; None when there is none."""
    try:
        return Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0]
    except (FileNotFoundError, ProcessLookupError):
        return None


def is_gone(pid):
    """Whether a process has ended and its parent has reaped it."""
    return _state(pid) is None


def has_ended(pid):
    """Whether a process has ended, reaped or not."""
    return _state(pid) in (None, "Z")


def is_suspended(pid):
    """Whether a signal has stopped a process, which SIGCONT would let go on."""
    return _state(pid) == "T"


def is_waiting(pid):
    """Whether a process that is not suspended waits for something."""
    return _state(pid) == "S"


def descriptors(pid):
    """The open descriptors of a process: the path or the name of what each is open on."""
    folder = f"/proc/{pid}/fd"
    found = {}
    for entry in os.listdir(folder):
        try:
            found[int(entry)] = os.readlink(f"{folder}/{entry}")
        except FileNotFoundError:  # closed meanwhile, as that of the folder itself
            pass
    return found


def has_loaded(pid, library):
    """Whether a process has a library of that file name in its memory."""
    return f"/{library}\n" in Path(f"/proc/{pid}/maps").read_text()


def signal_set(pid, kind):
    """The standard signals that a process has "Blk", "Ign" or "Cgt" (caught); "ShdPnd": pending."""
    prefix = "" if kind == "ShdPnd" else "Sig"
    lines = Path(f"/proc/{pid}/status").read_text().splitlines()
    mask = int(dict(line.split(":\t", 1) for line in lines)[prefix + kind], 16)
    return {number for number in range(1, 32) if mask >> (number - 1) & 1}


def limit_file_size(pid, size):
    """Limits what a process and those that it starts from now on can write to a file."""
    _, highest = resource.prlimit(pid, resource.RLIMIT_FSIZE)
    resource.prlimit(pid, resource.RLIMIT_FSIZE, (size, highest))


def pid_count():
    """How many process ids there are; after the last one they begin again."""
    return int(Path("/proc/sys/kernel/pid_max").read_text())


def is_up(interface):
    """Whether a network interface is up; it may be an alias such as eth0:1."""
    flags = Path("/sys/class/net", interface.partition(":")[0], "flags").read_text()
    return bool(int(flags, 16) & 1)
