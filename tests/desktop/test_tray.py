"""The icon in a tray on the screen, which may start and end at any time."""

from signal import SIGCONT, SIGSTOP

import pytest
from deadline import wait_until
from menu_bar import TEAL
from screen import FIXED_SIZE, Rect
from test_components import ALL_RUNNING
from tray import PLACE

SELECTION = "_NET_SYSTEM_TRAY_S0"
FLOATING = Rect(984, 8, 32, 32)  # without a panel, on an empty screen


def wait_until_at(desktop, place):
    """Waits until the icon is there, and nowhere else."""
    wait_until(lambda: list(desktop.menu_bar.windows().values()) == [place], f"the icon at {place}")


@pytest.fixture
def floating(running):
    """A launcher whose icon floats, also at the end."""
    wait_until_at(running, FLOATING)
    yield running
    running.end_panels()
    wait_until_at(running, FLOATING)


def test_the_icon_docks_in_a_tray_that_is_there(desktop):
    desktop.screen.program(*["trayer", "--edge", "bottom", "--SetDockType", "true"])
    wait_until(lambda: desktop.screen.owner(SELECTION), "the tray")
    desktop.launch(*desktop.suite.ports_options)
    wait_until(lambda: desktop.menu_bar.icon().y > 700, "the icon in the tray")
    assert desktop.menu_bar.states() == ALL_RUNNING
    assert desktop.quit() == 0


@pytest.mark.parametrize("saved", [False, True], ids=["icon destroyed", "icon saved"])
def test_the_icon_moves_into_each_tray_that_starts_and_floats_when_it_ends(floating, saved):
    for _ in range(3):
        tray = floating.docked(saved=saved)
        assert floating.menu_bar.states() == ALL_RUNNING
        tray.die()
        wait_until_at(floating, FLOATING)
    assert floating.menu_bar.states() == ALL_RUNNING


def test_the_icon_outlives_a_tray_that_dies_before_it_has_embedded(floating):
    tray = floating.tray(embeds=False)
    tray.icon()
    tray.die()
    wait_until_at(floating, FLOATING)
    floating.docked()


def test_the_icon_floats_while_a_tray_does_not_embed_it(floating):
    tray = floating.tray(embeds=False)
    tray.icon()
    wait_until(lambda: not floating.menu_bar.windows(), "the icon to be handed over")
    wait_until_at(floating, FLOATING)
    assert floating.menu_bar.states() == ALL_RUNNING
    tray.embed()
    floating.wait_until_docked(tray)
    assert floating.menu_bar.states() == ALL_RUNNING
    tray.die()
    wait_until_at(floating, FLOATING)


def test_the_icon_docks_in_a_tray_that_has_restarted_at_once(floating):
    """The window of the new tray then has the id of the old one's."""
    tray = floating.tray()
    tray.icon()
    floating.run.signal(SIGSTOP)
    old = floating.screen.owner(SELECTION)
    tray.die()
    wait_until(lambda: not floating.screen.owner(SELECTION), "the end of the tray")
    tray = floating.tray()
    assert floating.screen.owner(SELECTION) == old
    floating.run.signal(SIGCONT)
    floating.wait_until_docked(tray)


@pytest.mark.parametrize("opened", ["menu", "submenu"])
def test_the_icon_outlives_a_tray_that_dies_while_the_menu_is_open(floating, opened):
    tray = floating.docked()
    menu = floating.menu_bar.open()
    if opened == "submenu":
        menu.point_at("Hub")
        menu.submenu("Hub")
    tray.die()
    wait_until(lambda: FLOATING in floating.menu_bar.windows().values(), "the floating icon")
    floating.screen.press("Escape", "Escape")
    floating.menu_bar.wait_until_closed()
    assert floating.menu_bar.states() == ALL_RUNNING


def test_the_icon_moves_to_another_tray_that_takes_over(floating):
    first = floating.docked()
    second = floating.tray(place=(500, 600), size=24)
    first.die()
    floating.wait_until_docked(second)


@pytest.mark.parametrize("desktop", [{"server": (*FIXED_SIZE, "-screen", "1", "800x600x24")}], indirect=True)
def test_the_icon_docks_in_the_tray_of_its_own_screen(desktop):
    trays = [desktop.tray(number=number) for number in (0, 1)]
    desktop.change({"DISPLAY": desktop.screen.environment["DISPLAY"] + ".1"})
    desktop.launch(*desktop.suite.ports_options)
    trays[1].icon()
    assert not trays[0].asked()
    desktop.end_panels()
    desktop.screen.end()
    assert desktop.run.wait() == 0


def test_a_tray_finds_the_icons_title(floating):
    icon = floating.docked().icon()
    assert list(floating.screen.property(icon, "_XEMBED_INFO")) == [0, 1]
    assert bytes(floating.screen.property(icon, "_NET_WM_NAME")) == b"Tandrel"


# --- Size and background ------------------------------------------------------------------------

# The size that a tray gives, and how often the image of 18 by 16 pixels is as large in it.
SCALES = {16: 14 / 18, 22: 1, 24: 1, 32: 1.5, 48: 2, 64: 3}


def bars(pixels):
    """The rectangle of what is drawn on a clear background: x, y, width, height."""
    rows = [y for y, row in enumerate(pixels or []) if any(pixel[3] for pixel in row)]
    columns = [x for x in range(len(pixels or [])) if any(row[x][3] for row in pixels)]
    if not rows:
        return None
    return columns[0], rows[0], columns[-1] - columns[0] + 1, rows[-1] - rows[0] + 1


@pytest.mark.parametrize("size", SCALES)
def test_the_icon_is_drawn_at_the_size_that_the_tray_gives(floating, size):
    tray = floating.tray(alpha=True, size=size)
    width, height = 18 * SCALES[size], 14 * SCALES[size]  # the highest bar is 14 high

    def drawn():
        found = bars(floating.screen.pixels(tray.icon(), size))
        if not found:
            return False
        left, top, *seen = found
        off = (left + seen[0] / 2 - size / 2, top + seen[1] / 2 - size / 2)  # from the middle
        return all(
            abs(difference) < 1.5 for difference in (seen[0] - width, seen[1] - height, *off)
        )

    wait_until(drawn, f"bars of {width} by {height} in the middle")


def test_the_background_is_clear_and_the_bars_are_teal(floating):
    screen, tray = floating.screen, floating.tray(alpha=True)

    def bar():
        """The middle one's colour, once what is around it is clear."""
        pixels = screen.pixels(tray.icon(), 22)
        is_clear = pixels and pixels[0][0] == pixels[21][21] == pixels[11][8] == (0, 0, 0, 0)
        return pixels[11][11] if is_clear and pixels[11][11][3] else None

    *colour, alpha = wait_until(bar, "a bar on a clear background")
    assert alpha == 255 and all(abs(a - b) <= 4 for a, b in zip(colour, TEAL))


@pytest.mark.parametrize("colour", [0xFFFFFF, 0x202020], ids=["light", "dark"])
def test_a_tray_without_alpha_shows_its_own_background_through(floating, colour):
    floating.docked(colour=colour, size=32)
    background = ((colour >> 16) & 255, (colour >> 8) & 255, colour & 255)

    def drawn():
        image = floating.screen.image(Rect(*PLACE, 32, 32))
        corners = [image.pixel(x, y) for x in (0, 31) for y in (0, 31)]
        is_teal = all(abs(a - b) <= 4 for a, b in zip(image.pixel(16, 16), TEAL))
        return corners == [background] * 4 and is_teal

    wait_until(drawn, "bars on the tray's background")
