"""How the bundle is made: by packaging/macos/assemble.cmake, and of which programs."""

import plistlib
import shutil
import subprocess

import pytest
from components import PROGRAMS


@pytest.fixture
def made_of(tmp_path):
    """What a bundle is made of, each file with its name as its text."""
    for name in ("launcher", "Info.plist", "icon", *(f"suite/{name}" for name in PROGRAMS)):
        path = tmp_path / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(name)
        path.chmod(0o644 if name in ("Info.plist", "icon") else 0o755)
    return tmp_path


def assemble(root, folder):
    parts = {
        "BUNDLE": "Tandrel.app",
        "LAUNCHER": "launcher",
        "SUITE_DIR": "suite",
        "PLIST": "Info.plist",
        "ICON": "icon",
    }
    script = root / "packaging/macos/assemble.cmake"
    options = [f"-D{name}={folder / path}" for name, path in parts.items()]
    return subprocess.run(["cmake", *options, "-P", script], capture_output=True, text=True)


def test_each_file_has_its_place(root, made_of):
    assert assemble(root, made_of).returncode == 0
    contents = made_of / "Tandrel.app/Contents"
    assert (contents / "Info.plist").read_text() == "Info.plist"
    assert (contents / "Resources/Tandrel.icns").read_text() == "icon"
    assert (contents / "MacOS/launcher").read_text() == "launcher"
    for name in PROGRAMS:
        assert (contents / "MacOS" / name).read_text() == f"suite/{name}"
        assert (contents / "MacOS" / name).stat().st_mode & 0o777 == 0o755


def test_the_programs_are_the_launchers_components(root):
    assert (root / "packaging/programs").read_text().split() == PROGRAMS


def test_what_was_in_the_bundle_before_is_gone(root, made_of):
    old = made_of / "Tandrel.app/Contents/MacOS/config/launcher.json"
    old.parent.mkdir(parents=True)
    old.write_text("{}")
    assert assemble(root, made_of).returncode == 0
    assert not old.parent.exists()


def test_of_a_link_to_a_program_the_bundle_gets_the_program(root, made_of):
    (made_of / "suite/td_hub").rename(made_of / "hub-2")
    (made_of / "suite/td_hub").symlink_to("../hub-2")
    assert assemble(root, made_of).returncode == 0
    copy = made_of / "Tandrel.app/Contents/MacOS/td_hub"
    assert not copy.is_symlink()
    assert copy.read_text() == "suite/td_hub"


@pytest.mark.parametrize("missing", [*(f"suite/{name}" for name in PROGRAMS), "launcher", "icon"])
def test_without_one_of_the_files_there_is_no_bundle(root, made_of, missing):
    (made_of / missing).unlink()
    done = assemble(root, made_of)
    assert done.returncode != 0
    assert f"{made_of / missing}, which does not exist" in " ".join(done.stderr.split())
    assert not (made_of / "Tandrel.app").exists()


def configure(root, folder, *options):
    """Configures the tree with the target "app"; returns what was said and the build's rules."""
    common = ("-G", "Ninja", "-DTANDREL_APP=ON", "-DTANDREL_GUI=OFF", "-DTANDREL_COMPONENTS=OFF")
    command = ["cmake", "-S", root, "-B", folder, *common, *options]
    done = subprocess.run(command, capture_output=True, text=True, check=True)
    return done.stdout, (folder / "build.ninja").read_text()


def test_a_folder_of_the_suites_own_programs_is_taken(root, made_of, tmp_path):
    suite = made_of / "suite"
    said, rules = configure(root, tmp_path / "build", f"-DTANDREL_SUITE_DIR={suite}")
    assert f"-- Tandrel.app gets the suite's programs from {suite}\n" in said
    assert f"-DSUITE_DIR={suite} " in rules


def test_without_any_programs_there_is_no_target(root, tmp_path):
    said, rules = configure(root, tmp_path / "build")
    assert "-- No Tandrel.app: " in said
    assert "assemble.cmake" not in rules


def test_the_stand_ins_are_said_to_be_in_the_bundle(root, tmp_path):
    folder = tmp_path / "build"
    said, rules = configure(root, folder, "-DTANDREL_COMPONENTS=ON")
    assert "-- Tandrel.app gets the stand-ins: " in said
    assert f"-DSUITE_DIR={folder} " in rules


@pytest.fixture
def tree(root, tmp_path):
    """A copy of what is configured, for changes to it."""
    copy = tmp_path / "tree"
    for name in ("launcher", "gui", "packaging"):
        shutil.copytree(root / name, copy / name)
    for name in ("CMakeLists.txt", "VERSION", "hardening.cmake"):
        shutil.copy(root / name, copy)
    return copy


def test_everything_takes_the_version_from_one_file(tree, made_of, tmp_path):
    (tree / "VERSION").write_text("2.0.10+7\n")
    folder = tmp_path / "build"
    configure(tree, folder, f"-DTANDREL_SUITE_DIR={made_of / 'suite'}")
    plist = plistlib.loads((folder / "obj/packaging/macos/Info.plist").read_bytes())
    assert (plist["CFBundleShortVersionString"], plist["CFBundleVersion"]) == ("2.0.10", "7")
    assert 'version = "2.0.10+7";' in (folder / "obj/launcher/version.h").read_text()
    assert '\n.Os "Tandrel 2.0.10+7"\n' in (folder / "tandrel.1").read_text()


def test_the_version_is_the_same_everywhere(root, build):
    version = (root / "VERSION").read_text().strip()
    manual = (build / "tandrel.1").read_text()
    assert manual.splitlines()[2] == f'.Os "Tandrel {version}"'
    assert f'"{version}"' in (build / "obj/launcher/version.h").read_text()


@pytest.mark.parametrize("version", ["", "2.0.10\n", "2.0.10+7b\n"])
def test_a_file_that_holds_no_version_is_refused(tree, tmp_path, version):
    (tree / "VERSION").write_text(version)
    command = ["cmake", "-S", tree, "-B", tmp_path / "build"]
    done = subprocess.run(command, capture_output=True, text=True)
    assert done.returncode != 0
    assert "holds no version such as 1.2.3+45" in done.stderr
