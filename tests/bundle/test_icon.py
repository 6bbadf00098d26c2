"""The application's icon, read by another program than the one that drew it.

What must be at a point is computed here anew from the interface's bars, so the icon and the interface
show the same ones.
"""

import math
import re
import subprocess
import sys

import pytest
from PIL import Image

# Width and height in points, and pixels per point.
SIZES = [(points, scale) for points in (16, 32, 128, 256, 512) for scale in (1, 2)]
TRANSPARENT = (0, 0, 0, 0)
TILE = (23, 51, 64, 255)
# The drawing is 32 units wide: the tile with its corners, and the middle of the bars' 18 x 16.
TILE_EDGES, TILE_RADIUS = (3, 29), 6
BARS_LEFT, BARS_BOTTOM = 7, 8


@pytest.fixture(scope="module")
def icon(bundle):
    return bundle / "Contents/Resources/Tandrel.icns"


def read(icon, points, scale):
    with Image.open(icon) as image:
        image.size = (points, points, scale)
        image.load()
        return image.convert("RGBA")


@pytest.fixture(scope="module")
def interface(root):
    return (root / "gui/bars.h").read_text()


@pytest.fixture(scope="module")
def bars(interface):
    """The interface's bars: (x, y, width, height) each."""
    table = re.search(r" bars\[\]\[4\] = \{(.*?)\};", interface, re.DOTALL).group(1)
    found = re.findall(r"\{(.*?)\}", table)
    assert len(found) == 5
    return [tuple(map(float, bar.split(","))) for bar in found]


@pytest.fixture(scope="module")
def colour(interface):
    parts = (re.search(rf"bars_{part} = ([0-9.]+)", interface) for part in ("red", "green", "blue"))
    return *(int(float(part.group(1)) * 255 + 0.5) for part in parts), 255


def in_rounded(x, y, left, bottom, width, height, radius):
    across = max(left + radius - x, x - (left + width - radius), 0)
    up = max(bottom + radius - y, y - (bottom + height - radius), 0)
    return math.hypot(across, up) <= radius


def expected(x, y, bars, colour):
    """What a point of the drawing has, in its units with y upwards."""
    side = TILE_EDGES[1] - TILE_EDGES[0]
    if not in_rounded(x, y, TILE_EDGES[0], TILE_EDGES[0], side, side, TILE_RADIUS):
        return TRANSPARENT
    for left, bottom, width, height in bars:
        if in_rounded(x - BARS_LEFT, y - BARS_BOTTOM, left, bottom, width, height, 1):
            return colour
    return TILE


def test_the_file_has_every_size_and_no_other(icon):
    with Image.open(icon) as image:
        assert sorted(image.info["sizes"]) == sorted((size, size, scale) for size, scale in SIZES)


def drawing_point(pixel, size):
    """A place in the picture, in pixels from its top left, in units from the drawing's bottom left.

    At 16 pixels the drawing is moved by half a pixel, so that its lines are between pixels.
    """
    shift = 0.5 if size == 16 else 0
    x, y = pixel
    return (x + shift) * 32 / size, 32 - (y + shift) * 32 / size


@pytest.mark.parametrize("points, scale", SIZES)
def test_every_pixel_that_no_edge_crosses_has_its_colour(icon, bars, colour, points, scale):
    size = points * scale
    image = read(icon, points, scale)
    assert image.size == (size, size)
    pixels = image.load()
    seen = set()
    step = max(1, size // 128)  # of the large pictures only some of the pixels
    for top in range(0, size, step):
        for left in range(0, size, step):
            corners = {
                expected(*drawing_point((left + across, top + down), size), bars, colour)
                for across in (0.001, 0.5, 0.999)
                for down in (0.001, 0.5, 0.999)
            }
            if len(corners) == 1:
                assert (left, top, pixels[left, top]) == (left, top, *corners)
                seen |= corners
    assert seen == {TRANSPARENT, TILE, colour}


@pytest.mark.parametrize("points, scale", SIZES)
def test_each_bar_has_its_colour_in_its_middle(icon, bars, colour, points, scale):
    size = points * scale
    image = read(icon, points, scale)
    shift = 0.5 if size == 16 else 0
    for left, bottom, width, height in bars:
        x = (BARS_LEFT + left + width / 2) * size / 32 - shift
        y = (32 - BARS_BOTTOM - bottom - height / 2) * size / 32 - shift
        assert image.getpixel((int(x), int(y))) == colour
    for corner in ((0, 0), (size - 1, 0), (0, size - 1), (size - 1, size - 1)):
        assert image.getpixel(corner) == TRANSPARENT


@pytest.mark.parametrize("points, scale", [(16, 1), (16, 2), (32, 1), (32, 2)])
def test_edges_are_smooth(icon, bars, colour, points, scale):
    size = points * scale
    image = read(icon, points, scale)
    samples = 16
    places = [(index + 0.5) / samples for index in range(samples)]
    crossed = 0
    for top in range(size // 2):  # the other half is this one mirrored
        for left in range(size):
            found = [
                expected(*drawing_point((left + across, top + down), size), bars, colour)
                for across in places
                for down in places
            ]
            if len(set(found)) == 1:
                continue
            crossed += 1
            opacity = sum(value[3] for value in found) / len(found)
            assert abs(image.getpixel((left, top))[3] - opacity) <= 6
            covered = [value for value in found if value[3]]
            for channel in range(3):
                mean = sum(value[channel] for value in covered) / len(covered)
                assert abs(image.getpixel((left, top))[channel] - mean) <= 6
    assert crossed >= 10


def test_drawing_again_gives_the_same_bytes(icon, root, tmp_path):
    again = tmp_path / "again.icns"
    script = root / "packaging/icon/icns.py"
    subprocess.run([sys.executable, "-B", script, again], check=True)
    assert again.read_bytes() == icon.read_bytes()
