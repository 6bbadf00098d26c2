"""The icon's pixels."""

from menu_bar import TEAL
from screen import Rect

BACKDROP = (33, 33, 33)
SIZE = (18, 16)
BARS = ((0, 5.5, 5), (4, 3, 10), (8, 1, 14), (12, 3, 10), (16, 5.5, 5))  # x, bottom, height
WIDTH, RADIUS = 2, 1
FINE = 8  # samples per pixel in each direction


def inside(x, y):
    """Whether a point lies in one of the bars; y upwards."""
    for left, bottom, height in BARS:
        if left <= x <= left + WIDTH and bottom <= y <= bottom + height:
            nearest = min(max(y, bottom + RADIUS), bottom + height - RADIUS)
            return (x - left - RADIUS) ** 2 + (y - nearest) ** 2 <= RADIUS**2
    return False


def expected(column, row):
    """The colour of a pixel by the part of it that the bars cover."""
    steps = [(step + 0.5) / FINE for step in range(FINE)]
    covered = sum(inside(column + x, SIZE[1] - row - y) for x in steps for y in steps) / FINE**2
    return [ink * covered + paper * (1 - covered) for ink, paper in zip(TEAL, BACKDROP)]


def test_the_icon_is_five_teal_bars(running):
    found = running.menu_bar.icon()
    window = running.menu_bar.icon_window()
    assert found.x + found.width / 2 == window.x + window.width / 2
    left, top = ((outer - inner) // 2 for outer, inner in zip(window[2:], SIZE))
    image = running.screen.image(Rect(window.x + left, window.y + top, *SIZE))
    for row in range(SIZE[1]):
        for column in range(SIZE[0]):
            wanted, seen = expected(column, row), image.pixel(column, row)
            # Smoothing differs a little from one way of drawing to another.
            assert all(abs(a - b) < 40 for a, b in zip(wanted, seen)), (column, row, wanted, seen)
