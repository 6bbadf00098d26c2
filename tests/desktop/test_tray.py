"""The icon in a desktop's tray, which may start, end and hang at any time."""

from signal import SIGCONT, SIGSTOP

import pytest
from components import COMPONENTS
from deadline import wait_until
from desktop import Desktop
from menu_bar import TEAL
from screen import FIXED_SIZE, Rect
from tray import PLACE, SELECTION, Tray

FLOATING = Rect(994, 8, 22, 22)  # without a tray, on an empty screen
TRAYER = ("trayer", "--edge", "bottom", "--SetDockType", "true", "--width", "10")


def wait_until_at(desktop, place):
    """Waits until the icon is there, and nowhere else."""
    wait_until(lambda: list(desktop.menu_bar.windows().values()) == [place], f"the icon at {place}")


def wait_until_in_tray(desktop, size):
    wait_until_at(desktop, Rect(*PLACE, size, size))


@pytest.fixture
def floating(running):
    """A launcher whose icon floats."""
    wait_until_at(running, FLOATING)
    return running


@pytest.fixture
def two_screens():
    """A display with two screens."""
    made = Desktop(managed=False, server=(*FIXED_SIZE, "-screen", "1", "800x600x24"))
    yield made
    made.close()


@pytest.fixture
def new_tray(floating):
    """Starts trays, which end after the test; then the icon floats again."""
    trays = []

    def start(*arguments, **options):
        trays.append(Tray(floating.screen, *arguments, **options))
        return trays[-1]

    yield start
    for tray in trays:
        tray.die()
    wait_until_at(floating, FLOATING)


def test_the_icon_docks_in_the_tray(desktop):
    desktop.suite.record(*COMPONENTS)
    desktop.screen.program(*TRAYER)
    wait_until(lambda: desktop.screen.owner(SELECTION), "the tray")
    desktop.start()
    wait_until(lambda: desktop.menu_bar.icon().y > 700, "the icon in the tray")  # at the bottom
    assert set(desktop.menu_bar.states().values()) == {"green"}
    assert desktop.quit() == 0


def test_the_icon_moves_into_a_tray_that_starts_later(floating):
    floating.screen.program(*TRAYER)
    wait_until(lambda: floating.menu_bar.icon().y > 700, "the icon in the tray")
    assert set(floating.menu_bar.states().values()) == {"green"}


@pytest.mark.parametrize("saved", [False, True], ids=["icon destroyed", "icon saved"])
def test_the_icon_outlives_a_tray_that_restarts(floating, saved):
    for _ in range(3):
        tray = Tray(floating.screen)
        tray.embed(tray.asked(), 22, saved)
        wait_until_in_tray(floating, 22)
        tray.die()
        wait_until_at(floating, FLOATING)
    assert set(floating.menu_bar.states().values()) == {"green"}


@pytest.mark.parametrize("half_done", [False, True], ids=["asked", "taken"])
def test_the_icon_outlives_a_tray_that_dies_while_it_embeds(floating, half_done):
    tray = Tray(floating.screen)
    icon = tray.asked()
    if half_done:
        tray.take(icon)
    tray.die()
    wait_until_at(floating, FLOATING)
    tray = Tray(floating.screen)
    tray.embed(tray.asked(), 22)
    wait_until_in_tray(floating, 22)
    tray.die()
    wait_until_at(floating, FLOATING)


def test_the_icon_docks_in_a_tray_that_has_restarted_at_once(floating):
    """The window of the new tray then has the id of the old one's."""
    tray = Tray(floating.screen)
    tray.asked()
    floating.run.signal(SIGSTOP)
    old = floating.screen.owner(SELECTION)
    tray.die()
    wait_until(lambda: not floating.screen.owner(SELECTION), "the end of the tray")
    tray = Tray(floating.screen)
    assert floating.screen.owner(SELECTION) == old
    floating.run.signal(SIGCONT)
    tray.embed(tray.asked(), 22)
    wait_until_in_tray(floating, 22)
    tray.die()
    wait_until_at(floating, FLOATING)


def test_the_icon_floats_while_a_tray_does_not_answer(desktop):
    tray = Tray(desktop.screen)
    desktop.start()
    icon = tray.asked()
    wait_until_at(desktop, FLOATING)
    menu = desktop.menu_bar.open()
    right, bottom = FLOATING.x + FLOATING.width, FLOATING.y + FLOATING.height
    assert menu.rect.x + menu.rect.width >= right and menu.rect.y == bottom  # at the icon
    desktop.menu_bar.dismiss(menu)
    tray.embed(icon, 22)  # late, but still
    wait_until_in_tray(desktop, 22)
    tray.die()
    wait_until_at(desktop, FLOATING)
    assert desktop.quit() == 0


def test_a_tray_that_gives_the_icon_back_is_asked_again_when_it_announces_itself(
    floating, new_tray
):
    tray = new_tray()
    icon = tray.asked()
    tray.embed(icon, 22)
    wait_until_in_tray(floating, 22)
    tray.let_go(icon)
    wait_until_at(floating, FLOATING)
    tray.announce("WM_S0")
    assert set(floating.menu_bar.states().values()) == {"green"}
    assert not tray.was_asked()
    tray.announce()
    tray.embed(tray.asked(), 22)
    wait_until_in_tray(floating, 22)


def test_a_tray_that_has_the_icon_is_not_asked_again(floating, new_tray):
    tray = new_tray()
    tray.embed(tray.asked(), 22)
    wait_until_in_tray(floating, 22)
    tray.announce()
    assert set(floating.menu_bar.states().values()) == {"green"}  # later than the announcement
    assert not tray.was_asked()
    wait_until_in_tray(floating, 22)


@pytest.mark.parametrize("end", [Tray.let_go, lambda tray, _: tray.resign()])
def test_an_embedded_icon_floats_only_at_the_end_of_that(desktop, end):
    """Not when the time is over that a tray has for it."""
    desktop.suite.set_behaviour("sender", "ignore-sigterm")
    desktop.start()
    tray = Tray(desktop.screen)
    icon = tray.asked()
    tray.embed(icon, 22)
    wait_until_in_tray(desktop, 22)
    desktop.menu_bar.choose("sender", "stop")  # takes longer than a tray has
    assert desktop.menu_bar.states()["sender"] == "red"
    wait_until_in_tray(desktop, 22)
    end(tray, icon)
    wait_until_at(desktop, FLOATING)
    assert desktop.quit() == 0
    tray.die()


def test_the_icon_moves_to_another_tray_that_takes_over(floating, new_tray):
    first = new_tray()
    first.embed(first.asked(), 22)
    wait_until_in_tray(floating, 22)
    second = new_tray()
    second.embed(second.asked(), 20)
    wait_until_in_tray(floating, 20)


def test_the_icon_floats_while_a_tray_that_takes_over_does_not_answer(floating, new_tray):
    first = new_tray()
    first.embed(first.asked(), 22)
    wait_until_in_tray(floating, 22)
    second = new_tray()
    icon = second.asked()
    wait_until_at(floating, FLOATING)
    second.embed(icon, 20)
    wait_until_in_tray(floating, 20)


def test_the_icon_docks_in_the_tray_of_its_own_screen(two_screens):
    trays = [Tray(two_screens.screen, number=number) for number in (0, 1)]
    name = two_screens.screen.environment["DISPLAY"]
    two_screens.change({"DISPLAY": f"{name}.1"})
    two_screens.launch(*two_screens.suite.ports_options)
    trays[1].embed(trays[1].asked(), 22)
    assert not trays[0].was_asked()
    for tray in trays:
        tray.die()


@pytest.mark.parametrize("desktop", [False], indirect=True)
@pytest.mark.parametrize(("density", "side"), [(96, 22), (192, 44)])
def test_a_tray_finds_the_icons_title_and_size(desktop, density, side):
    has_minimum, has_base = 16, 256
    desktop.screen.set_resource("Xft.dpi", density)
    tray = Tray(desktop.screen)
    desktop.launch(*desktop.suite.ports_options)
    icon = tray.asked()
    assert list(desktop.screen.property(icon, "_XEMBED_INFO")) == [0, 1]
    hints = list(desktop.screen.property(icon, "WM_NORMAL_HINTS"))
    assert hints[0] == has_minimum | has_base
    assert hints[5:7] == hints[15:17] == [side, side]
    wait_for_title(desktop, icon)
    tray.take(icon)
    tray.show(icon)
    wait_until_in_tray(desktop, side)
    desktop.menu_bar.icon()  # also drawn where the tray gives no size
    tray.die()
    (icon,) = wait_until(desktop.menu_bar.windows, "the floating icon")
    wait_for_title(desktop, icon)
    assert desktop.quit() == 0


def wait_for_title(desktop, icon):
    wait_until(
        lambda: bytes(desktop.screen.property(icon, "WM_NAME")) == b"Tandrel", "the icon's title"
    )


def test_a_tray_that_asks_for_an_unknown_visual_gets_the_screens(floating, new_tray):
    tray = new_tray(visual=0x1FFFFFFF)
    tray.embed(tray.asked(), 22)
    wait_until_in_tray(floating, 22)
    assert set(floating.menu_bar.states().values()) == {"green"}


# --- Presses ------------------------------------------------------------------------------------


def test_a_press_that_the_tray_sends_opens_the_menu_at_its_place(floating, new_tray):
    """For example on a picture of the icon, which some trays show instead of its window."""
    tray = new_tray()
    icon = tray.asked()
    tray.embed(icon, 22)
    wait_until_in_tray(floating, 22)
    menu = floating.menu_bar.open(lambda *_: floating.screen.send_press(icon, 500, 200))
    assert (menu.rect.x, menu.rect.y) == (500, 201)
    floating.menu_bar.dismiss(menu)


# --- Size and background ------------------------------------------------------------------------

# The size that a tray gives, and how often the image of 18 by 16 pixels is as large in it.
SCALES = {16: 14 / 18, 22: 1, 24: 1, 32: 1.5, 48: 2, 128: 6}


def bars(pixels):
    """The rectangle of what is drawn on a clear background: x, y, width, height."""
    if not pixels:
        return None
    rows = [y for y, row in enumerate(pixels) if any(pixel[3] for pixel in row)]
    columns = [x for x in range(len(pixels)) if any(row[x][3] for row in pixels)]
    if not rows:
        return None
    return columns[0], rows[0], columns[-1] - columns[0] + 1, rows[-1] - rows[0] + 1


@pytest.mark.parametrize("size", SCALES)
def test_the_icon_is_drawn_at_the_size_that_the_tray_gives(floating, new_tray, size):
    tray = new_tray(alpha=True)
    icon = tray.asked()
    tray.embed(icon, size)
    width, height = 18 * SCALES[size], 14 * SCALES[size]  # the highest bar is 14 high

    def drawn():
        found = bars(floating.screen.pixels(icon, size))
        if not found:
            return False
        left, top, *seen = found
        off = (left + seen[0] / 2 - size / 2, top + seen[1] / 2 - size / 2)  # from the middle
        return all(
            abs(difference) < 1.5 for difference in (seen[0] - width, seen[1] - height, *off)
        )

    wait_until(drawn, f"bars of {width} by {height} in the middle")


def test_the_background_is_clear_where_the_tray_shows_its_own(floating, new_tray):
    screen, tray = floating.screen, new_tray(alpha=True)
    icon = tray.asked()
    tray.embed(icon, 22)
    pixels = wait_until(
        lambda: bars(screen.pixels(icon, 22)) and screen.pixels(icon, 22), "the icon"
    )
    assert pixels[0][0] == pixels[21][21] == pixels[11][8] == (0, 0, 0, 0)
    bar = pixels[11][11]  # the middle one
    assert bar[3] == 255 and all(abs(a - b) <= 4 for a, b in zip(bar, TEAL))


@pytest.mark.parametrize("colour", [0xFFFFFF, 0x202020], ids=["light", "dark"])
def test_without_the_trays_background_the_icon_has_a_tile_with_round_corners(floating, new_tray, colour):
    tray = new_tray(colour)
    tray.embed(tray.asked(), 32)
    wait_until_in_tray(floating, 32)
    bar = ((colour >> 16) & 255, (colour >> 8) & 255, colour & 255)

    def drawn():
        image = floating.screen.image(Rect(*PLACE, 32, 32))
        corners = [image.pixel(x, y) for x in (0, 31) for y in (0, 31)]
        is_teal = all(abs(a - b) <= 4 for a, b in zip(image.pixel(16, 16), TEAL))
        return corners == [bar] * 4 and image.pixel(16, 1) == (33, 33, 33) and is_teal

    wait_until(drawn, "bars on a tile with round corners")
