"""Writes the stub libraries that our programs are linked with, from the table symbols.txt.

usage: make_libraries.py ROOT LIST

ROOT  the root of the system that they stand in for
LIST  what macOS 11's libSystem has, as a stub library, for a check of the table
"""

import re
import sys
from pathlib import Path

from symbols import PROCESSORS, path_of, read_table


def stub(library, exports):
    targets = ", ".join(f"{processor}-macos" for processor in PROCESSORS)
    lines = [
        "--- !tapi-tbd",
        "tbd-version: 4",
        f"targets: [ {targets} ]",
        f"install-name: '{path_of(library)}'",
        "exports:",
    ]
    for processor in PROCESSORS:
        names = ", ".join(f"'{symbol}'" for symbol in sorted(exports[processor]))
        lines += [f"  - targets: [ {processor}-macos ]", f"    symbols: [ {names} ]"]
    return "\n".join(lines + ["...", ""])


def file_of(root, library):
    if library.startswith("lib"):
        return root / "usr/lib" / f"{library}.tbd"
    return root / "System/Library/Frameworks" / f"{library}.framework" / f"{library}.tbd"


def main():
    root = Path(sys.argv[1])
    table = read_table()
    known = set(re.findall(r"[\w$.]+", Path(sys.argv[2]).read_text()))
    unknown = set.union(*table["libSystem"].values()) - known
    if unknown:
        sys.exit(f"symbols.txt: libSystem has no {', '.join(sorted(unknown))}")
    for library, exports in table.items():
        file = file_of(root, library)
        file.parent.mkdir(parents=True, exist_ok=True)
        text = stub(library, exports)
        if not file.exists() or file.read_text() != text:
            file.write_text(text)


main()
