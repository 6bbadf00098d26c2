"""Sums up the result files that the test runners have written, and says why tests were skipped:

    totals.py FOLDER SECONDS

ctest.xml is CTest's. Some of its tests are suites, which have a file of their own with the same name.
"""

import collections
import pathlib
import sys
import xml.etree.ElementTree as ET


def has_failed(case):
    return case.find("failure") is not None or case.find("error") is not None


def cases(folder):
    """All test cases; of the suites in ctest.xml only those that failed without a failed test."""
    paths = pathlib.Path(folder).glob("*.xml")
    files = {path.stem: list(ET.parse(path).getroot().iter("testcase")) for path in sorted(paths)}
    for name, found in files.items():
        for case in found:
            suite = files.get(case.get("name")) if name == "ctest" else None
            if not suite or (has_failed(case) and not any(map(has_failed, suite))):
                yield case


if __name__ == "__main__":
    passed = failed = 0
    reasons = collections.Counter()
    for case in cases(sys.argv[1]):
        if has_failed(case):
            failed += 1
        elif (skipped := case.find("skipped")) is not None:
            reasons[skipped.get("message")] += 1
        else:
            passed += 1
    for reason, count in reasons.items():
        print(f"Skipped {count}: {reason}")
    print(f"Total: {passed} passed, {failed} failed, {sum(reasons.values())} skipped in {sys.argv[2]} s")
    sys.exit(0 if passed and not failed else 1)
