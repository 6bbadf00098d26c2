"""The tests of what makes tables of measurements; nothing is measured here."""

import sys

# What it imports to measure is there on Linux only.
collect_ignore = [] if sys.platform == "linux" else ["test_measure.py"]
