"""Ctrl-Z while the launcher starts a process: the shell gets the terminal back."""

import subprocess
from signal import SIGTSTP

import pytest
import system
from components import COMPONENTS
from console import READY
from deadline import wait_until
from run import CTRL_C

# Loaded into the launcher. Before it executes a program, the new process suspends the launcher's process group,
# as Ctrl-Z does, if the folder TD_SUSPEND has a file with the program's name, which it removes.
SUSPEND = r"""
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>
int execve(const char *path, char *const argv[], char *const environment[]) {
  char file[4096];
  snprintf(file, sizeof file, "%s%s", getenv("TD_SUSPEND"), strrchr(path, '/'));
  if (unlink(file) == 0) {
    kill(-getpgid(getppid()), SIGTSTP);
  }
  return (int)syscall(SYS_execve, path, argv, environment);
}
"""

# A shell with job control, which continues once its job is suspended.
SHELL = 'set -m; "$0" "$@"; echo "status $?"; fg; echo "status $?"'
SUSPENDED = f"status {128 + SIGTSTP}"


@pytest.fixture
def start_in_shell(suite):
    def start(suspended, *arguments):
        source = suite.folder / "suspend.c"
        source.write_text(SUSPEND)
        library = source.with_suffix(".so")
        subprocess.run(["cc", "-shared", "-fPIC", "-o", library, source], check=True)
        (suite.folder / "suspend").mkdir()
        (suite.folder / "suspend" / suspended).touch()
        script = f'export TD_SUSPEND=suspend LD_PRELOAD="{library}"; {SHELL}'
        # AddressSanitizer expects its library to be the first.
        options = suite.environment.get("ASAN_OPTIONS", "")
        environment = {**suite.environment, "ASAN_OPTIONS": f"{options}:verify_asan_link_order=0"}
        command = ["-c", script, suite.launcher, *arguments]
        return suite.start(*command, program="/bin/sh", environment=environment, terminal="all")

    return start


@system.needs("replaced calls")
def test_while_one_component_starts(suite, start_in_shell):
    suite.script("td_align", "#!/bin/sh\nexit 5\n")
    run = start_in_shell("td_align", "align")
    run.wait_for(SUSPENDED)
    run.wait_for("status 5")
    assert run.wait() == 0


@system.needs("replaced calls")
@pytest.mark.parametrize("options", [[], ["--verbose"]], ids=["quiet", "verbose"])
@pytest.mark.parametrize("suspended", ["td_hub", "env", "td_receiver"])
def test_while_the_suite_starts(suite, start_in_shell, suspended, options):
    """A component or a tool starts: env is the first program of a probe."""
    suite.record(*COMPONENTS)
    run = start_in_shell(suspended, *suite.ports_options, "--no-browser", *options)
    run.wait_for(SUSPENDED)
    run.wait_for(READY)
    wait_until(lambda: len(suite.events("start")) == len(COMPONENTS), "the components")
    run.press(CTRL_C)
    run.wait_for("status 0")
    assert run.wait() == 0
    assert len(suite.events("start")) == len(COMPONENTS)
