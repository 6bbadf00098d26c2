"""The tests of what makes tables of measurements; nothing is measured here."""

import sys
from pathlib import Path

sys.path[:0] = [str(Path(__file__).parents[2] / name) for name in ("bench", "tests/system")]
