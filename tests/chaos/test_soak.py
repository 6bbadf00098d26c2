"""scripts/soak says which rule broke, after which steps, and how to repeat them."""

import os
import re
import subprocess
from pathlib import Path

ROOT = Path(__file__).parents[2]


def test_a_launcher_that_does_nothing_breaks_a_rule(tmp_path):
    launcher = tmp_path / "launcher"
    launcher.write_text("#!/bin/sh\n")
    launcher.chmod(0o755)
    environment = {**os.environ, "TD_BUILD_DIR": str(tmp_path), "TD_DEADLINE": "2"}
    soak = subprocess.run(
        [ROOT / "scripts/soak", "1", "2"], capture_output=True, text=True, env=environment
    )
    assert soak.returncode == 1
    assert re.search(r"^(Broken: |timed out waiting for ).*(\n.*)?(\n.*)?\nSteps:\n  ", soak.stdout, re.MULTILINE)
    assert "\nThe same again: scripts/soak 1 2\n" in soak.stdout
