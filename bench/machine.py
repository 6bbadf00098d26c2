"""What a run was measured on and with."""

import os
import re
import subprocess
from pathlib import Path

PACKAGES = ("tini", "dumb-init", "supervisor", "ruby-foreman", "s6", "curl", "libc6")


def first_line(*command):
    return subprocess.check_output(command, text=True).splitlines()[0]


def processor():
    """The processor's name; its architecture where the system does not tell more."""
    text = Path("/proc/cpuinfo").read_text()
    name = re.search(r"^model name\s*: (.*)", text, re.MULTILINE)
    return " ".join(name[1].split()) if name else os.uname().machine


def system():
    text = Path("/etc/os-release").read_text()
    return re.search(r'^PRETTY_NAME="(.*)"', text, re.MULTILINE)[1]


def versions():
    command = ["dpkg-query", "-W", "-f", "${Package} ${Version}, ", *PACKAGES]
    return subprocess.check_output(command, text=True).removesuffix(", ")


def describe():
    return {
        "processor": f"{processor()}, {len(os.sched_getaffinity(0))} cores",
        "system": f"{system()}, Linux {os.uname().release.partition('-')[0]}",
        "compiler": first_line("c++", "--version"),
        "compared with": versions(),
    }


def load():
    """The mean number of running processes in the last minute."""
    return os.getloadavg()[0]
