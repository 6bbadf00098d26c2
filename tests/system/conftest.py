"""Fixtures of the system tests."""

import os
import shutil
import subprocess
import tempfile
from pathlib import Path

import inherited_signals
import pytest
import suite as suite_module
import system
from standins import StandIns

inherited_signals.handle_ignored()


@pytest.fixture(scope="session")
def session_folder():
    folder = tempfile.mkdtemp(prefix="tandrel-test-", dir=system.TEMPORARY_FOLDER)
    yield os.path.realpath(folder)
    shutil.rmtree(folder)


ENVIRONMENT_PRINTER = """
#include <stdio.h>
#include <unistd.h>
extern char **environ;
static void print(const char *text) {
  fputs(text, stdout);
  putchar(0);
}
int main(void) {
  char folder[4096];
  print(getcwd(folder, sizeof folder));
  for (char **variable = environ; *variable; ++variable) {
    print(*variable);
  }
}
"""


@pytest.fixture(scope="session")
def environment_printer(session_folder):
    """A program that prints its working folder and its environment, each string followed by a NUL."""
    source = Path(session_folder, "environment.c")
    source.write_text(ENVIRONMENT_PRINTER)
    subprocess.run(["cc", "-o", source.with_suffix(""), source], check=True)
    return source.with_suffix("")


@pytest.fixture
def free_ports():
    ports = suite_module.Ports()
    yield ports
    ports.close()


@pytest.fixture
def suite_in(session_folder, free_ports):
    """A function that makes a suite in a private folder of a given name.

    Fails the test that leaves a process behind.
    """
    parent = tempfile.mkdtemp(dir=session_folder)
    made = []

    def make(name):
        folder = Path(parent, name)
        folder.mkdir()
        made.append(suite_module.Suite(folder, free_ports, session_folder))
        return made[-1]

    yield make
    left = [process for suite in made for process in suite.close()]
    shutil.rmtree(parent)
    assert not left, f"left running: {[process.pid for process in left]}"


@pytest.fixture
def suite(suite_in):
    """A private folder with the launcher and its components."""
    return suite_in("suite")


@pytest.fixture
def standins():
    """The stand-ins in a private folder, without a launcher."""
    made = StandIns()
    yield made
    made.close()
