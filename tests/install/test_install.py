"""The files of "cmake --install", and the installed launcher run as a user does."""

import json
import os
import shutil
import stat
import subprocess
from signal import SIGTERM

import pytest
from components import STOP_ORDER
from console import READY, STOPPED, USAGE
from deadline import wait_until
from installed import PROGRAMS, files_of, install

LAUNCHER = {
    "bin/tandrel",
    "libexec/tandrel/launcher",
    "share/doc/tandrel/copyright",
    "share/doc/tandrel/installing.md",
    "share/bash-completion/completions/tandrel",
    "share/fish/vendor_completions.d/tandrel.fish",
    "share/man/man1/tandrel.1",
    "share/zsh/site-functions/_tandrel",
}
UNITS = {f"share/systemd/user/{name}.service" for name in ("tandrel", "tandrel-component@")}
ICON_SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)
INTERFACE = {
    "libexec/tandrel/tdgui.so",
    "share/applications/tandrel.desktop",
    "share/icons/hicolor/scalable/apps/tandrel.svg",
    *(f"share/icons/hicolor/{size}x{size}/apps/tandrel.png" for size in ICON_SIZES),
}
STANDINS = {f"libexec/tandrel/{name}" for name in PROGRAMS[1:]}
CONFIG = "libexec/tandrel/config/launcher.json"


@pytest.mark.linux
def test_everything_but_the_stand_ins_is_installed(build, folder):
    install(build, folder)
    assert files_of(folder) == LAUNCHER | UNITS | INTERFACE


@pytest.mark.linux
@pytest.mark.parametrize(
    "component, files",
    [("launcher", LAUNCHER | UNITS), ("interface", INTERFACE), ("standins", STANDINS)],
)
def test_each_component_can_be_installed_alone(build, folder, component, files):
    install(build, folder, "--component", component)
    assert files_of(folder) == files


@pytest.mark.linux
def test_a_destination_goes_before_the_prefix(build, folder):
    install(build, "/usr", DESTDIR=str(folder))
    assert files_of(folder / "usr") == LAUNCHER | UNITS | INTERFACE
    assert [path.name for path in folder.iterdir()] == ["usr"]


def test_only_programs_are_executable_and_everybody_may_read_everything(tree):
    for path in tree.prefix.rglob("*"):
        assert not path.is_symlink()
        executable = path.is_dir() or path.parent.name == "bin" or path.name in PROGRAMS
        assert stat.S_IMODE(path.stat().st_mode) == (0o755 if executable else 0o644), path


def configure(root, folder, *options):
    common = ("-G", "Ninja", "-DTANDREL_GUI=OFF", "-DTANDREL_APP=OFF")
    command = ["cmake", "-S", root, "-B", folder, *common, *options]
    return subprocess.run(command, capture_output=True, text=True)


@pytest.fixture
def suite(folder):
    """A folder of programs that go by the suite's names; one of them is a link."""
    made = folder / "suite"
    made.mkdir()
    for name in PROGRAMS[1:]:
        (made / name).write_text(f"#!/bin/sh\necho {name} of the suite\n")
        (made / name).chmod(0o755)
    (made / "td_hub").rename(made / "hub-2")
    (made / "td_hub").symlink_to("hub-2")
    return made


def test_the_suites_own_programs_are_installed(root, folder, suite):
    made = configure(root, folder / "build", "-DTANDREL_COMPONENTS=OFF", f"-DTANDREL_SUITE_DIR={suite}")
    assert made.returncode == 0, made.stderr
    install(folder / "build", folder / "prefix", "--component", "suite")
    assert files_of(folder / "prefix") == STANDINS
    for name in PROGRAMS[1:]:
        installed = folder / "prefix/libexec/tandrel" / name
        assert not installed.is_symlink()
        assert subprocess.check_output([installed], text=True) == f"{name} of the suite\n"


def test_the_stand_ins_are_not_installed_in_place_of_the_suites_programs(root, folder, suite):
    options = ("-DTANDREL_INSTALL_STANDINS=ON", f"-DTANDREL_SUITE_DIR={suite}")
    made = configure(root, folder / "build", *options)
    assert made.returncode != 0
    assert "TANDREL_INSTALL_STANDINS is for trying without the suite" in made.stderr


def test_the_stand_ins_are_installed_when_asked_for(root, folder):
    made = configure(root, folder / "build", "-DTANDREL_INSTALL_STANDINS=ON")
    assert made.returncode == 0, made.stderr
    rules = (folder / "build/obj/packaging/cmake_install.cmake").read_text()
    alone, together = 'COMPONENT STREQUAL "standins"', 'OR NOT CMAKE_INSTALL_COMPONENT'
    (line,) = {line for line in rules.splitlines() if alone in line}
    assert together in line


def test_the_launcher_may_be_outside_the_prefix(root, folder):
    made = configure(root, folder / "build", f"-DCMAKE_INSTALL_LIBEXECDIR={folder / 'elsewhere'}")
    assert made.returncode == 0, made.stderr
    wrapper = (folder / "build/obj/packaging/tandrel").read_text()
    assert wrapper.endswith(f' && exec "{folder}/elsewhere/tandrel/launcher" "$@"\n')


def test_the_wrapper_has_two_lines(tree):
    assert len(tree.launcher.read_text().splitlines()) == 2


def help_of(*command, **options):
    done = subprocess.run([*command, "--help"], capture_output=True, **options)
    return done.returncode, done.stdout, done.stderr


def test_the_launcher_is_found_by_the_path_and_by_links(tree, folder):
    assert help_of("tandrel", env=tree.environment) == (0, USAGE, b"")
    (folder / "a link").symlink_to(tree.launcher)
    (folder / "bin").symlink_to(".local/bin")
    (folder / "second").symlink_to("a link")
    for path in ("a link", "bin/tandrel", "second"):
        assert help_of(folder / path) == (0, USAGE, b"")
        assert help_of(f"./{path}", cwd=folder) == (0, USAGE, b"")
    assert help_of("./tandrel", cwd=tree.launcher.parent) == (0, USAGE, b"")
    assert help_of("sh", "bin/tandrel", cwd=tree.prefix) == (0, USAGE, b"")


def test_everything_can_be_moved(tree, folder):
    moved = folder / "my bin"
    tree.prefix.rename(moved)
    assert help_of(moved / "bin/tandrel") == (0, USAGE, b"")
    done = subprocess.run([moved / "bin/tandrel", "align", "--help"], capture_output=True)
    assert done.returncode == 0 and b"td_align" in done.stdout
    moved.rename(tree.prefix)


@pytest.mark.linux
def test_the_wrapper_becomes_the_launcher(tree):
    tree.record()
    run = tree.start("hub", "--http-port", str(tree.http), "--udp-port", str(tree.udp), terminal=None)
    tree.wait_for_starts("hub")
    assert os.readlink(f"/proc/{run.pid}/exe") == f"{tree.programs}/launcher"
    assert run.stop(SIGTERM) == -SIGTERM
    wait_until(lambda: "td_hub" in tree.events("stop"), "the end of the hub")


@pytest.mark.parametrize("arguments", [[], ["two words", "", "*", "$HOME", "'\""]])
def test_a_components_arguments_and_status_come_through(tree, arguments):
    script = '#!/bin/sh\nprintf "%s\\n" "$0" "$@"\nexit 7\n'
    (tree.programs / "td_align").write_text(script)
    done = subprocess.run([tree.launcher, "align", *arguments], capture_output=True, text=True)
    assert done.returncode == 7
    assert done.stdout.splitlines() == [f"{tree.programs}/td_align", *arguments]


def test_the_suite_runs_in_a_terminal(tree):
    tree.record()
    run = tree.start_up(terminal="all")
    tree.wait_for_starts()
    run.interrupt()
    assert run.wait() == 0
    assert run.text.endswith(STOPPED)
    assert tree.events("stop") == STOP_ORDER


def save_settings(tree):
    """Saves the tree's ports, as a change in the menu would."""
    config = tree.prefix / CONFIG
    config.parent.mkdir(mode=0o755)
    config.write_text(json.dumps({"http_port": tree.http, "udp_port": tree.udp}))
    return config


def test_the_next_installation_keeps_the_settings(tree, build):
    config = save_settings(tree)
    text = config.read_text()
    install(build, tree.prefix)
    run = tree.start("--no-browser")
    run.wait_for(f":{tree.http}/")
    run.wait_for(READY)
    assert run.stop() == 0
    assert config.read_text() == text


def as_another_user():
    """The command that runs another command as a user who may not write to the launcher's folder."""
    if os.geteuid() != 0:
        return []
    return ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]


def start_as_another_user(tree, *arguments):
    tree.programs.chmod(0o555)
    command = [*as_another_user(), str(tree.launcher), *arguments]
    return tree.start(*command[1:], program=shutil.which(command[0]))


@pytest.mark.linux
def test_a_user_who_may_not_write_to_the_launchers_folder_runs_it_without_a_settings_file(tree):
    before = files_of(tree.programs)
    run = start_as_another_user(tree, *tree.ports_options)
    run.wait_for(READY)
    assert run.errors == b""
    assert run.stop() == 0
    assert files_of(tree.programs) == before
    assert not (tree.programs / "config").exists()


@pytest.mark.linux
def test_every_user_reads_what_root_has_saved(tree):
    save_settings(tree)
    run = start_as_another_user(tree, "--no-browser")
    run.wait_for(f":{tree.http}/")
    run.wait_for(READY)
    assert run.stop() == 0


def commands_of(page, heading):
    """The command blocks under a heading of a page."""
    _, _, section = page.read_text().partition(f"\n## {heading}\n")
    return section.partition("\n## ")[0].split("\n```\n")[1::2]


@pytest.mark.linux
def test_the_pages_commands_install_for_one_user_and_remove_all_of_it(build, root, folder):
    made, removed = commands_of(root / "docs/installing.md", "From the sources")
    lines = [line for line in made.splitlines() if line.startswith("cmake --install build ")]
    install = "\n".join(lines).replace(" build ", f" {build} ")
    environment = {**os.environ, "HOME": str(folder)}

    def run(commands):
        subprocess.run(["sh", "-e", "-c", commands], env=environment, check=True, capture_output=True)

    run(install)
    assert files_of(folder / ".local") == LAUNCHER | UNITS | INTERFACE | STANDINS
    (folder / ".local" / CONFIG).parent.mkdir()
    (folder / ".local" / CONFIG).touch()
    (folder / ".local/share/other.png").touch()
    run(removed)
    assert files_of(folder / ".local") == {"share/other.png"}
