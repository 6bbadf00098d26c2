"""The application's icon as pixels, PNG and SVG, with Python's standard library alone.

The bars are those of gui/bars.h. They stand on a dark tile with round corners, on which they are as
clear in a light Dock as in a dark one.
"""

import itertools
import struct
import zlib

# As (x, y, width, height) with y upwards, and the parts of their colour, 0 to 1.
BARS = ((0, 5.5, 2, 5), (4, 3, 2, 10), (8, 1, 2, 14), (12, 3, 2, 10), (16, 5.5, 2, 5))
BAR_RADIUS = 1
BAR_COLOUR = (0.3, 0.79, 0.75)
# The drawing's side in the units of the bars, whose 18 x 16 units are in its middle.
GRID = 32
BARS_ORIGIN = (7, 8)
TILE = (3, 3, 26, 26)
TILE_RADIUS = 6
TILE_COLOUR = (0.09, 0.20, 0.25)

SUBROWS = 16  # rows of samples for each row of pixels


def placed_bars():
    """The bars where they are in the drawing."""
    left, bottom = BARS_ORIGIN
    return [(x + left, y + bottom, width, height) for x, y, width, height in BARS]


def span(rect, radius, y):
    """The left and the right end of a rounded rectangle at the height y; None where it has none."""
    left, bottom, width, height = rect
    if not bottom < y < bottom + height:
        return None
    into_corner = max(bottom + radius - y, y - (bottom + height - radius), 0)
    inset = radius - (radius**2 - into_corner**2) ** 0.5
    return left + inset, left + width - inset


def row_coverage(shapes, size, row):
    """How much of each pixel of a row the shapes cover, 0 to 1: exact across, sampled in height."""
    steps = [0.0] * (size + 2)  # the difference of each pixel's coverage from that of the pixel before it
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


def draw(size):
    """The icon's pixels from the top left, four bytes each: red, green, blue and opacity."""
    bar_shapes = [(place, BAR_RADIUS) for place in placed_bars()]
    pixel = pixel_drawer()
    pixels = []
    for row in range(size):
        tile = row_coverage([(TILE, TILE_RADIUS)], size, row)
        pixels += map(pixel, tile, row_coverage(bar_shapes, size, row))
    return b"".join(pixels)


def pixel_drawer():
    """Returns the function that makes a pixel's four bytes from its coverage by the tile and by a bar."""
    known = {}

    def pixel(tile, bar):
        value = known.get((tile, bar))
        if value is None:
            mixed = [t * (1 - bar) + b * bar for t, b in zip(TILE_COLOUR, BAR_COLOUR)]
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


def svg():
    """The icon as a picture of any size."""

    def rect(place, radius, colour):
        left, bottom, width, height = place
        red, green, blue = (int(part * 255 + 0.5) for part in colour)
        return (
            f'  <rect x="{left:g}" y="{GRID - bottom - height:g}" width="{width:g}"'
            f' height="{height:g}" rx="{radius}" fill="#{red:02x}{green:02x}{blue:02x}"/>\n'
        )

    head = f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {GRID} {GRID}">\n'
    shapes = [rect(TILE, TILE_RADIUS, TILE_COLOUR)]
    shapes += [rect(place, BAR_RADIUS, BAR_COLOUR) for place in placed_bars()]
    return head + "".join(shapes) + "</svg>\n"
