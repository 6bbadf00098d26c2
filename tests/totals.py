"""Sums up the result files that the test runners have written:

    totals.py FOLDER SECONDS
"""

import pathlib
import sys
import xml.etree.ElementTree as ET


def totals(folder):
    tests = skipped = failed = 0
    for path in sorted(pathlib.Path(folder).glob("*.xml")):
        for suite in ET.parse(path).getroot().iter("testsuite"):
            tests += int(suite.get("tests"))
            skipped += int(suite.get("skipped") or 0) + int(suite.get("disabled") or 0)
            failed += int(suite.get("failures")) + int(suite.get("errors") or 0)
    return tests - skipped - failed, failed, skipped


if __name__ == "__main__":
    passed, failed, skipped = totals(sys.argv[1])
    print(f"Total: {passed} passed, {failed} failed, {skipped} skipped in {sys.argv[2]} s")
    sys.exit(0 if passed and not failed else 1)
