"""The manual page, checked with two formatters."""

import os
import re
import subprocess

import pytest
from console import USAGE

pytestmark = pytest.mark.linux


@pytest.fixture
def text(tree):
    """The page as a user of the installed launcher reads it."""
    environment = {**os.environ, "MANPATH": str(tree.prefix / "share/man"), "MANWIDTH": "1000"}
    command = ["man", "--warnings", "1", "tandrel"]
    done = subprocess.run(command, env=environment, capture_output=True, text=True)
    assert (done.returncode, done.stderr) == (0, "")
    return re.sub(r"\s+", " ", done.stdout)


def test_no_formatter_warns(build):
    page = build / "tandrel.1"
    command = ["man", "--warnings=w", "--local-file", page]
    man = subprocess.run(command, capture_output=True, text=True)
    assert (man.returncode, man.stderr) == (0, "")
    command = ["mandoc", "-T", "lint", "-W", "warning", page]
    mandoc = subprocess.run(command, capture_output=True, text=True)
    assert (mandoc.returncode, mandoc.stdout, mandoc.stderr) == (0, "", "")


def test_it_names_every_option_and_component(text):
    options = re.findall(r"^  (--[a-z-]+)", USAGE.decode(), re.MULTILINE)
    assert len(options) == 7
    synopsis, _, description = text.partition(" DESCRIPTION ")
    for word in (*options, "--help", "hub | sender | receiver | align"):
        assert word in synopsis, word
    for option in options:
        assert option in description, option


def test_it_says_where_an_installed_launchers_settings_are_kept(text):
    for sentence in (
        "What any other user changes in the menu applies to that run only",
        "A run as the system administrator makes the folder config",
        "Removing the package removes them.",
    ):
        assert sentence in text


def test_it_says_where_the_programs_are(text):
    assert "libexec/tandrel" in text and "@" not in text
