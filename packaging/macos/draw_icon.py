#!/usr/bin/env python3
"""Draws the application's icon, with Python's standard library alone.

    draw_icon.py gui/launcher_mac_gui.mm Tandrel.icns

The bars are the menu bar's: their table and their colour are read from its source. They stand on a
dark tile with round corners, on which they are as clear in a light Dock as in a dark one.
"""

import itertools
import re
import struct
import sys
import zlib

# The drawing's side in the units of the bars, whose 18 x 16 units are in its middle. As in their
# table, y grows upwards.
GRID = 32
BARS_ORIGIN = (7, 8)
BAR_RADIUS = 1
TILE = (3, 3, 26, 26)
TILE_RADIUS = 6
TILE_COLOUR = (0.09, 0.20, 0.25)

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

SUBROWS = 16  # rows of samples for each row of pixels


def read_bars(source):
    """The bars as (x, y, width, height) and their colour, three numbers from 0 to 1."""
    table = re.search(r"NSRect bars\[\] = \{(.*?)\n *\};", source, re.DOTALL)
    number = r"([0-9.]+)"
    rect = rf"\{{\{{{number}, {number}\}}, \{{{number}, {number}\}}\}}"
    bars = [tuple(map(float, bar)) for bar in re.findall(rect, table.group(1))]
    colour = re.search(rf"colorWithSRGBRed:{number} green:{number} blue:{number} alpha:1.0", source)
    return bars, tuple(map(float, colour.groups()))


def span(rect, radius, y):
    """From where to where a rounded rectangle reaches at the height y; None when it does not."""
    left, bottom, width, height = rect
    if not bottom < y < bottom + height:
        return None
    into_corner = max(bottom + radius - y, y - (bottom + height - radius), 0)
    inset = radius - (radius**2 - into_corner**2) ** 0.5
    return left + inset, left + width - inset


def row_coverage(shapes, size, row):
    """How much of each pixel of a row the shapes cover, 0 to 1: exact across, sampled in height."""
    steps = [0.0] * (size + 2)  # what each pixel's coverage differs by from the pixel before it
    scale = size / GRID
    for subrow in range(SUBROWS):
        y = GRID - (row + (subrow + 0.5) / SUBROWS - shift(size)) / scale
        for rect, radius in shapes:
            for edge, sign in zip(span(rect, radius, y) or (), (1, -1)):
                pixel, part = divmod(edge * scale + shift(size), 1)
                steps[int(pixel)] += sign * (1 - part)
                steps[int(pixel) + 1] += sign * part
    # Rounded, because the sums are not quite 0 or 1 where they should be.
    return [round(total / SUBROWS, 6) for total in itertools.accumulate(steps[:size])]


def shift(size):
    """At 16 pixels the grid's odd lines fall between pixels: half a pixel aside they are sharp."""
    return -0.5 if size == 16 else 0.0


def draw(bars, bar_colour, size):
    """The icon's pixels from the top left, four bytes each: red, green, blue and opacity."""
    bar_shapes = [
        ((x + BARS_ORIGIN[0], y + BARS_ORIGIN[1], width, height), BAR_RADIUS)
        for x, y, width, height in bars
    ]
    pixel = pixel_drawer(bar_colour)
    pixels = []
    for row in range(size):
        tile = row_coverage([(TILE, TILE_RADIUS)], size, row)
        pixels += map(pixel, tile, row_coverage(bar_shapes, size, row))
    return b"".join(pixels)


def pixel_drawer(bar_colour):
    """Makes the function from the coverages by the tile and by a bar to a pixel's four bytes."""
    known = {}

    def pixel(tile, bar):
        value = known.get((tile, bar))
        if value is None:
            mixed = [t * (1 - bar) + b * bar for t, b in zip(TILE_COLOUR, bar_colour)]
            value = bytes(int(part * 255 + 0.5) for part in (*mixed, tile))
            value = known[tile, bar] = value if value[3] else bytes(4)
        return value

    return pixel


def png(pixels, size):
    def chunk(kind, data):
        checksum = zlib.crc32(kind + data)
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", checksum)

    width = size * 4
    rows = [pixels[start : start + width] for start in range(0, len(pixels), width)]
    unfiltered = b"".join(b"\0" + row for row in rows)
    header = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)  # 8 bits, RGBA, not interlaced
    return b"".join(
        (
            b"\x89PNG\r\n\x1a\n",
            chunk(b"IHDR", header),
            chunk(b"sRGB", b"\0"),  # intent: perceptual
            chunk(b"IDAT", zlib.compress(unfiltered, 9)),
            chunk(b"IEND", b""),
        )
    )


def packed(channel):
    """One channel in runs: a byte below 128 precedes so many and one bytes to copy, a higher one
    precedes a byte to repeat so often less 125."""
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


def icon_file(bars, colour):
    """The bytes of the .icns file."""
    sizes = {*PNG_ENTRIES.values(), *PACKED_ENTRIES.values()}
    drawn = {size: draw(bars, colour, size) for size in sizes}
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
    source, icon = sys.argv[1:]
    with open(source, encoding="utf-8") as file:
        bars, colour = read_bars(file.read())
    with open(icon, "wb") as file:
        file.write(icon_file(bars, colour))


if __name__ == "__main__":
    main()
