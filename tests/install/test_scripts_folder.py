"""The scripts find the tree that they belong to."""

import os
import re
import shutil
import subprocess
from pathlib import Path

import pytest

SCRIPTS = Path(__file__).parents[2] / "scripts"
FINDS_THE_TREE = re.compile(r'^.*cd "\$\(dirname "\$0"\)/\.\.".*$', re.MULTILINE)
FINDING = [path.name for path in SCRIPTS.iterdir() if FINDS_THE_TREE.search(path.read_text())]


def test_there_are_scripts_that_look_for_the_tree():
    assert len(FINDING) >= 13


@pytest.mark.parametrize("name", sorted(FINDING))
def test_the_tree_is_found_whatever_cdpath_says(name, tmp_path):
    """Runs the script, on its own system, up to the line that finds the tree."""
    for folder in ("tree", "elsewhere"):
        (tmp_path / folder / "scripts").mkdir(parents=True)
    script = Path(shutil.copy(SCRIPTS / name, tmp_path / "tree/scripts"))
    text = script.read_text()
    end = FINDS_THE_TREE.search(text).end()
    script.write_text(text[:end] + '\necho "${root:-$PWD}"\n')
    system = "Darwin" if name == "mac-app" else "Linux"
    (tmp_path / "uname").write_text(f"#!/bin/sh\necho {system}\n")
    (tmp_path / "uname").chmod(0o755)
    environment = {
        **os.environ,
        "PATH": f"{tmp_path}:{os.environ['PATH']}",
        "CDPATH": str(tmp_path / "elsewhere"),
    }
    done = subprocess.run(
        [f"scripts/{name}"],
        cwd=tmp_path / "tree",
        env=environment,
        capture_output=True,
        text=True,
        check=True,
    )
    assert done.stdout == f"{tmp_path}/tree\n"
