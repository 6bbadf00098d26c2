"""The desktop entry and its icons, and starting the launcher as a desktop does."""

import configparser
import shlex
import subprocess

import pytest
from desktop_session import desktop_session
from PIL import Image, ImageChops
from test_install import ICON_SIZES

pytestmark = pytest.mark.linux

BAR, TILE, CLEAR = (77, 201, 191, 255), (23, 51, 64, 255), (0, 0, 0, 0)


@pytest.fixture
def path(tree):
    return tree.prefix / "share/applications/tandrel.desktop"


@pytest.fixture
def entry(path):
    parser = configparser.ConfigParser(interpolation=None)
    parser.optionxform = str
    parser.read(path)
    assert parser.sections() == ["Desktop Entry"]
    return parser["Desktop Entry"]


def test_it_is_valid(path):
    done = subprocess.run(["desktop-file-validate", path], capture_output=True, text=True)
    assert (done.returncode, done.stdout) == (0, "")


@pytest.mark.parametrize("terminal", [None, "all"], ids=["no-terminal", "sessions-terminal"])
def test_started_by_a_desktop_it_shows_the_icon_and_ends_by_its_menu(tree, entry, terminal):
    assert entry["Terminal"] == "false"
    command = shlex.split(entry["Exec"])
    tree.record()
    config = tree.programs / "config"
    config.mkdir()
    settings = f'{{"http_port": {tree.http}, "udp_port": {tree.udp}, "open_browser": false}}'
    (config / "launcher.json").write_text(settings)
    with desktop_session(tree) as (screen, menu_bar):
        run = tree.start(
            *command, terminal=terminal, environment=screen.environment, program="/usr/bin/env"
        )
        menu_bar.icon()
        tree.wait_for_starts()
        menu_bar.choose("Open Dashboard at Launch")
        menu_bar.choose("Quit Tandrel")
        assert run.wait() == 0
    # In a user's own installation, a change in the menu is saved.
    assert '"open_browser": true' in (config / "launcher.json").read_text()


@pytest.fixture
def theme(tree, entry):
    assert entry["Icon"] == "tandrel"
    return tree.prefix / "share/icons/hicolor"


def rendered(theme, folder, size):
    """The scalable icon as another program draws it, with premultiplied alpha."""
    # At 16 pixels the drawing is shifted half a pixel up and left.
    drawn_size = 32 if size == 16 else size
    drawn = folder / f"{size}.png"
    picture = theme / "scalable/apps/tandrel.svg"
    sizes = ["-w", str(drawn_size), "-h", str(drawn_size)]
    subprocess.run(["rsvg-convert", *sizes, "-o", drawn, picture], check=True)
    image = Image.open(drawn).convert("RGBA").convert("RGBa")
    return image.crop((1, 1, 33, 33)).reduce(2) if size == 16 else image


@pytest.mark.parametrize("size", ICON_SIZES)
def test_each_size_shows_what_the_scalable_icon_shows(theme, folder, size):
    picture = Image.open(theme / f"{size}x{size}/apps/tandrel.png")
    assert (picture.format, picture.mode, picture.size) == ("PNG", "RGBA", (size, size))
    difference = ImageChops.difference(picture.convert("RGBa"), rendered(theme, folder, size))
    assert max(high for _, high in difference.getextrema()) <= 40  # where round corners meet
    assert picture.getextrema()[3] == (0, 255)
    assert picture.getpixel((size * 5 // 32, size // 2)) == TILE


def test_the_scalable_icon_has_the_bars_colours(theme, folder):
    image = rendered(theme, folder, 64)
    assert [image.getpixel(point) for point in ((32, 32), (28, 32), (0, 0))] == [BAR, TILE, CLEAR]
