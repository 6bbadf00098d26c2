#!/usr/bin/env python3
"""Draws the icon of an application for a Mac.

    icns.py Tandrel.icns
"""

import re
import struct
import sys

from drawing import draw, png

# Sizes in pixels by the entry's type; most serve one size in points at single or double resolution.
PNG_ENTRIES = {
    b"ic07": 128,
    b"ic08": 256,
    b"ic09": 512,
    b"ic10": 1024,
    b"ic11": 32,
    b"ic12": 64,
    b"ic13": 256,
    b"ic14": 512,
}
# Not every macOS reads a PNG in the two smallest single-resolution entries; all read these pairs of
# colours and mask.
PACKED_ENTRIES = {(b"is32", b"s8mk"): 16, (b"il32", b"l8mk"): 32}


def packed(channel):
    """One channel, run-length encoded: a byte n below 128 precedes n + 1 bytes to copy, a higher one
    precedes a byte to repeat n - 125 times."""
    result = bytearray()
    copied = bytearray()
    for run in re.finditer(rb"(.)\1*", channel, re.DOTALL):
        value, left = run.group(1), len(run.group())
        while left >= 3:
            count = min(left, 130)
            result += copied_run(copied) + bytes((count + 125,)) + value
            copied.clear()
            left -= count
        copied += value * left
    return bytes(result + copied_run(copied))


def copied_run(data):
    parts = [data[start : start + 128] for start in range(0, len(data), 128)]
    return b"".join(bytes((len(part) - 1,)) + part for part in parts)


def icon_file():
    """The bytes of the .icns file."""
    sizes = {*PNG_ENTRIES.values(), *PACKED_ENTRIES.values()}
    drawn = {size: draw(size) for size in sizes}
    entries = []
    for (colours, mask), size in PACKED_ENTRIES.items():
        red, green, blue, opacity = (drawn[size][channel::4] for channel in range(4))
        entries.append((colours, b"".join(map(packed, (red, green, blue)))))
        entries.append((mask, opacity))
    for kind, size in PNG_ENTRIES.items():
        entries.append((kind, png(drawn[size], size)))
    data = b"".join(kind + struct.pack(">I", len(body) + 8) + body for kind, body in entries)
    return b"icns" + struct.pack(">I", len(data) + 8) + data


def main():
    (icon,) = sys.argv[1:]
    with open(icon, "wb") as file:
        file.write(icon_file())


if __name__ == "__main__":
    main()
