"""A private copy of this tree, in which everything is already installed and built."""

import shutil
from pathlib import Path

ROOT = Path(__file__).parents[2]


class Clone:
    """A tree whose build folder is that of `suite`.

    Its scripts install and build nothing: each attempt is only a line in the file `steps`.
    """

    def __init__(self, suite):
        self.suite = suite
        self.folder = suite.folder.parent
        self.steps = self.folder / "steps"
        for path in ROOT.iterdir():
            if path.name not in (".git", "build", "scripts"):
                (self.folder / path.name).symlink_to(path)
        shutil.copytree(ROOT / "scripts", self.folder / "scripts")
        for name in ("bootstrap", "build"):
            suite.script(
                self.folder / "scripts" / name, f'#!/bin/sh\necho {name} "$@" >>"{self.steps}"\n'
            )

    def script(self, name, *arguments, **options):
        """Starts one of the scripts; see `Run`."""
        program = self.folder / "scripts" / name
        return self.suite.start(*arguments, program=program, **options)
