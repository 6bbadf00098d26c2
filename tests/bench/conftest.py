"""The tests of what makes tables of measurements; nothing is measured here."""

import sys
from pathlib import Path

ROOT = Path(__file__).parents[2]
sys.path[:0] = [str(ROOT / name) for name in ("bench", "tests/system", "tests/desktop")]

# What it imports to measure is there on Linux only.
collect_ignore = [] if sys.platform == "linux" else ["test_measure.py"]
