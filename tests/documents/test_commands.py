"""Each command in the documents is run as it is written, or listed with the reason why it is not."""

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
def test_a_block_is_of_a_known_kind(path):
    assert documents.marks(path) <= {*documents.COMMAND_BLOCKS, "json", "text"}


@pytest.mark.skipif(sys.platform != "linux", reason="the sandbox needs Linux")
@pytest.mark.parametrize("path", WITH_COMMANDS, ids=str)
def test_the_commands_work(sandbox, path):
    for command in documents.commands(path):
        if commands.is_run(path, command):
            text, expected = commands.end_of(path, command)
            beside = commands.is_beside_a_run(path, command)
            status, printed = sandbox.run(command, text, beside)
            assert status == expected, f"{command}\n{printed}"


@pytest.mark.parametrize("pattern", commands.patterns())
def test_every_pattern_matches_a_command(pattern):
    assert any(fnmatchcase(f"{path}: {command}", pattern) for path, command in ALL)


def test_scripts_and_presets_of_all_commands_exist():
    presets = json.loads((documents.ROOT / "CMakePresets.json").read_text())
    kinds = {"cmake": "configurePresets", "cmake --build": "buildPresets", "ctest": "testPresets"}
    names = {tool: {preset["name"] for preset in presets[kind]} for tool, kind in kinds.items()}
    for path, command in ALL:
        for script in re.findall(r"(?:^|\s)(scripts/[\w-]+)", command):
            assert os.access(documents.ROOT / script, os.X_OK), f"{path}: {command}"
        for tool, preset in re.findall(r"(cmake --build|cmake|ctest) --preset (\S+)", command):
            assert preset in names[tool], f"{path}: {command}"
