"""scripts/soak says which rule broke, after which steps, and how to repeat them."""

import os
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
    assert "Broken: the exit status\nexpected: 1\n but it is: 0\nSteps:" in soak.stdout
    assert "The same again: scripts/soak 1 2" in soak.stdout
