"""What the tests must know about Linux; see system_macos for a Mac."""

import os
import resource
import shutil
from pathlib import Path

MISSING = {}  # the abilities that this system lacks, with the reasons

TEMPORARY_FOLDER = None  # Python's own choice

# A shell command that succeeds if process $pid has ended and has not been reaped yet.
IS_ZOMBIE = '{ read -r _ _ state _ < "/proc/$pid/stat" && [ "$state" = Z ]; }'

# The launcher to test: in the folder of the build or of the scripted interfaces.
LAUNCHER = "{build}/launcher"


def install_interface(modules, folder, name="tdgui.so"):
    """Installs an interface for the launcher in `folder`."""
    shutil.copy2(modules / name, folder / "tdgui.so")


def path_of_launcher(path, folder):
    """The path that the launcher has of itself if it is started as `path` in that folder."""
    return path


def _state(pid):
    """The kernel's letter for the state of a process; None if there is no such process."""
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
    """Whether a signal has suspended a process, which SIGCONT would resume."""
    return _state(pid) == "T"


def is_waiting(pid):
    """Whether a process is asleep, and not suspended."""
    return _state(pid) == "S"


def descriptors(pid):
    """The open descriptors of a process, with the path or the name of what each is open on."""
    folder = f"/proc/{pid}/fd"
    found = {}
    for entry in os.listdir(folder):
        try:
            found[int(entry)] = os.readlink(f"{folder}/{entry}")
        except FileNotFoundError:  # closed meanwhile, such as that of the folder itself
            pass
    return found


def has_loaded(pid, library):
    """Whether a process has loaded a library of that file name."""
    return f"/{library}\n" in Path(f"/proc/{pid}/maps").read_text()


def signal_set(pid, kind):
    """The signals of a process that are "Blk" (blocked), "Ign" (ignored), "Cgt" (caught) or "ShdPnd"
    (pending), without real-time signals."""
    prefix = "" if kind == "ShdPnd" else "Sig"
    lines = Path(f"/proc/{pid}/status").read_text().splitlines()
    mask = int(dict(line.split(":\t", 1) for line in lines)[prefix + kind], 16)
    return {number for number in range(1, 32) if mask >> (number - 1) & 1}


def limit_file_size(pid, size):
    """Sets the file size limit of a process, and of those that it starts from now on."""
    _, highest = resource.prlimit(pid, resource.RLIMIT_FSIZE)
    resource.prlimit(pid, resource.RLIMIT_FSIZE, (size, highest))


def pid_count():
    """The number of process ids, after which they wrap around."""
    return int(Path("/proc/sys/kernel/pid_max").read_text())


def is_up(interface):
    """Whether a network interface is up; it may be an alias such as eth0:1."""
    flags = Path("/sys/class/net", interface.partition(":")[0], "flags").read_text()
    return bool(int(flags, 16) & 1)
