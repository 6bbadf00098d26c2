"""The tests of what makes tables of measurements; nothing is measured here."""

import sys
from pathlib import Path

ROOT = Path(__file__).parents[2]
sys.path[:0] = [str(ROOT / name) for name in ("bench", "tests/system", "tests/desktop")]
