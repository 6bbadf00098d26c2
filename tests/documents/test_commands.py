"""The commands in the documents: each is run as it stands there, or listed with a reason why not."""

import json
import os
import re
import sys
from fnmatch import fnmatchcase

import commands
import documents
import pytest

ALL = [(path, command) for path in documents.documents() for command in documents.commands(path)]
WITH_COMMANDS = sorted({path for path, command in ALL if commands.is_run(path, command)})


def test_there_are_commands():
    assert {"README.md", "docs/suite.md", "docs/installing.md"} <= {str(path) for path in WITH_COMMANDS}


@pytest.mark.parametrize("path", documents.documents(), ids=str)
def test_a_block_holds_commands_or_says_what_else(path):
    assert documents.marks(path) <= {*documents.COMMAND_BLOCKS, "json", "text"}


@pytest.mark.skipif(sys.platform != "linux", reason="the private place takes a Linux system")
@pytest.mark.parametrize("path", WITH_COMMANDS, ids=str)
def test_the_commands_work(place, path):
    for command in documents.commands(path):
        if commands.is_run(path, command):
            text, expected = commands.end_of(path, command)
            beside = commands.is_beside_a_run(path, command)
            status, printed = place.run(command, text, beside)
            assert status == expected, f"{command}\n{printed}"


@pytest.mark.parametrize("pattern", commands.patterns())
def test_no_pattern_is_left_over(pattern):
    assert any(fnmatchcase(f"{path}: {command}", pattern) for path, command in ALL)


def test_scripts_and_presets_of_all_commands_exist():
    presets = json.loads((documents.ROOT / "CMakePresets.json").read_text())["configurePresets"]
    names = {preset["name"] for preset in presets}
    for path, command in ALL:
        for script in re.findall(r"(?:^|\s)(scripts/[\w-]+)", command):
            assert os.access(documents.ROOT / script, os.X_OK), f"{path}: {command}"
        for preset in re.findall(r"--preset (\S+)", command):
            assert preset in names, f"{path}: {command}"
