"""scripts/run --menu-bar: what it prints, what a Ctrl-C does to it, and its status."""

import shutil
import socket
from pathlib import Path

import pytest
from console import READY, STOPPED, USAGE
from menu_bar import TEAL
from PIL import Image
from run import CTRL_BACKSLASH, CTRL_C

TREE = Path(__file__).parents[2]
HOW_TO_QUIT = "Quit Tandrel in the icon's menu stops everything."
GREEN, RED = (40, 205, 65), (255, 59, 48)  # of what runs and what is stopped
REMINDER = "Ctrl-C stops nothing here."
DISPLAYS = pytest.mark.parametrize("display", ["shown", "none", "not there"])


class Tree:
    """A tree with the scripts, whose build folder is the suite's; nothing is installed or built."""

    def __init__(self, desktop):
        self._desktop = desktop
        self.folder = desktop.suite.folder.parent
        self.steps = self.folder / "steps"
        self.picture = desktop.suite.folder / "menu-bar.png"
        for name in ("tests", "packaging"):
            (self.folder / name).symlink_to(TREE / name)
        shutil.copytree(TREE / "scripts", self.folder / "scripts")
        for name in ("bootstrap", "build"):
            desktop.suite.script(
                self.folder / "scripts" / name, f'#!/bin/sh\necho {name} "$@" >>"{self.steps}"\n'
            )

    def run(self, *arguments, display="shown", programs=None, **options):
        """Starts scripts/run on the screen of the desktop, on its Wayland compositor alone, on none,
        or on those that are not there; with the suite's own programs from a folder, if it is given."""
        environment = dict(self._desktop.screen.environment)
        if programs:
            environment["TANDREL_SUITE_DIR"] = str(programs)
        if display != "shown":
            del environment["DISPLAY"]
        if display == "not there":
            with socket.socket(socket.AF_UNIX) as left:
                left.bind(f"{environment['XDG_RUNTIME_DIR']}/nothing")
            environment.update(DISPLAY=":nothing", WAYLAND_DISPLAY="nothing")
        if display == "wayland":
            environment.update(WAYLAND_DISPLAY="wayland-test")
        program = self.folder / "scripts" / "run"
        return self._desktop.launch(
            *arguments, program=program, environment=environment, **options
        )


@pytest.fixture
def tree(desktop):
    return Tree(desktop)


@pytest.mark.parametrize("key", [CTRL_C, CTRL_BACKSLASH])
def test_a_key_that_ends_programs_leaves_everything_as_it_is(desktop, tree, key):
    run = tree.run("--menu-bar", *desktop.suite.ports_options, terminal="all")
    desktop.menu_bar.icon()
    run.wait_for(HOW_TO_QUIT)
    assert READY.encode() not in run.output
    for count in (1, 2):
        run.press(key)
        run.wait_for(REMINDER, count=count)
    desktop.suite.wait_for_restart("sender", desktop.suite.kill("sender"))
    assert desktop.quit() == 0
    assert run.text.endswith(STOPPED)


@pytest.mark.parametrize("place", [0, 1, 5])
def test_the_flag_may_stand_anywhere(desktop, tree, place):
    arguments = ["--no-sender", *desktop.suite.ports_options]
    arguments.insert(place, "--menu-bar")
    run = tree.run(*arguments)
    desktop.menu_bar.icon()
    run.wait_for(HOW_TO_QUIT)
    assert b"Running    : hub, receiver\n" in run.output
    assert tree.steps.read_text() == "bootstrap desktop\nbuild\n"
    desktop.menu_bar.open()
    desktop.screen.press("ctrl+q")
    assert run.wait() == 0
    assert run.output.endswith(STOPPED)


def test_without_the_flag_the_launcher_runs_in_the_terminal(desktop, tree):
    run = tree.run(*desktop.suite.ports_options, terminal="all")
    run.wait_for(READY)
    run.interrupt()
    assert run.wait() == 0
    assert HOW_TO_QUIT.encode() not in run.output
    assert tree.steps.read_text() == "bootstrap run\nbuild\n"


@DISPLAYS
@pytest.mark.parametrize("arguments", [["--menu-bar", "--unknown"], ["--unknown", "--menu-bar"]])
def test_an_unknown_option_gives_the_launchers_message(tree, display, arguments):
    run = tree.run(*arguments, display=display)
    assert run.wait() == 1
    assert run.errors == b"Tandrel: unknown option '--unknown'\n\n"
    assert run.output == USAGE
    assert not tree.picture.exists()


@DISPLAYS
def test_the_usage_text_alone_is_printed(tree, display):
    run = tree.run("--menu-bar", "--help", display=display)
    assert run.wait() == 0
    assert run.errors == b""
    assert run.output == USAGE
    assert not tree.picture.exists()


@pytest.mark.parametrize(("end", "status"), [("exit 7", 7), ("kill -KILL $$", 137)])
def test_the_launchers_status_is_the_scripts(desktop, tree, end, status):
    desktop.suite.script("launcher", f'#!/bin/sh\nprintf "said %s " "$@"\n{end}\n')
    run = tree.run("a b", "--menu-bar", "")
    assert run.wait() == status
    assert run.output == b"said a b said  "


def test_the_suites_own_programs_run_behind_the_icon(desktop, tree):
    programs = tree.folder / "own"
    programs.mkdir()
    for path in desktop.suite.folder.glob("td_*"):
        path.rename(programs / path.name)
    run = tree.run("--menu-bar", *desktop.suite.ports_options, programs=programs)
    desktop.menu_bar.icon()
    run.wait_for(HOW_TO_QUIT)
    assert desktop.quit() == 0
    assert run.output.endswith(STOPPED)


@pytest.mark.parametrize("display", ["none", "not there"])
def test_without_a_display_it_leaves_a_picture(desktop, tree, display):
    run = tree.run("--no-sender", "--menu-bar", *desktop.suite.ports_options, display=display)
    assert run.wait() == 0, run.errors
    assert b"build/menu-bar.png" in run.output
    colours = {colour for _, colour in Image.open(tree.picture).convert("RGB").getcolors(1 << 20)}
    assert colours >= {TEAL, GREEN, RED}  # the icon, the hub and the sender


def test_a_wayland_compositor_alone_is_a_display(desktop, tree, compositor):
    host = desktop.host()
    run = tree.run("--menu-bar", *desktop.suite.ports_options, display="wayland")
    icon = host.icon()
    run.wait_for(HOW_TO_QUIT)
    icon.choose("Quit")
    assert run.wait() == 0
    assert run.output.endswith(STOPPED) and not tree.picture.exists()


@pytest.fixture
def make_pictures(desktop, tree):
    """Runs scripts/pictures with a stand-in for what takes the pictures; returns its status."""

    def make(what):
        (tree.folder / "tests").unlink()
        taker = tree.folder / "tests" / "desktop" / "pictures.py"
        taker.parent.mkdir(parents=True)
        taker.write_text(f"import os, sys; {what}\n")
        (tree.folder / "docs" / "pictures").mkdir(parents=True)
        run = desktop.launch(program=tree.folder / "scripts" / "pictures")
        return run.wait(), {p.name: p.read_text() for p in tree.folder.glob("docs/pictures/*")}

    return make


TAKE_TWO = """
os.mkdir(sys.argv[1])
for name in ("a.png", "b.png"):
    open(os.path.join(sys.argv[1], name), "w").write({})
"""


def test_pictures_that_are_the_same_each_time_are_kept(make_pictures):
    assert make_pictures(TAKE_TWO.format("name")) == (0, {"a.png": "a.png", "b.png": "b.png"})


@pytest.mark.parametrize("text", ["str(os.getpid())", "name + sys.argv[1] * (name == 'b.png')"])
def test_pictures_that_differ_from_time_to_time_are_not_kept(make_pictures, text):
    assert make_pictures(TAKE_TWO.format(text)) == (1, {})
