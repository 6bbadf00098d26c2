"""The table symbols.txt: which library has the symbols that our programs for macOS use."""

from pathlib import Path

PROCESSORS = ("x86_64", "arm64")
TABLE = Path(__file__).with_name("symbols.txt")


def path_of(library):
    """Where a Mac has the library: the name by which a program asks for it."""
    if library == "libcpp-httplib":
        return "@rpath/libcpp-httplib.dylib"  # not macOS's, so wherever it has been installed
    if library == "libSystem":
        return "/usr/lib/libSystem.B.dylib"
    if library == "libobjc":
        return "/usr/lib/libobjc.A.dylib"
    if library == "libc++":
        return "/usr/lib/libc++.1.dylib"
    version = "C" if library in ("AppKit", "Foundation") else "A"
    return f"/System/Library/Frameworks/{library}.framework/Versions/{version}/{library}"


def read_table():
    """{library: {processor: set of symbols}}"""
    table = {}
    for line in TABLE.read_text().splitlines():
        words = line.split()
        if not words or words[0].startswith("#"):
            continue
        if not line.startswith(" "):
            library = table[words[0]] = {processor: set() for processor in PROCESSORS}
            continue
        for processor in words[1:] or PROCESSORS:
            library[processor].add(words[0])
    return table
