"""scripts/bootstrap: without apt-get and Homebrew it looks for the tools, on Debian it installs them."""

import shutil
import subprocess

import pytest

TOOLS = ("c++", "cmake", "ninja", "curl", "pkg-config")
DESKTOP_LIBRARIES = ("Qt6Widgets", "Qt6DBus", "xcb")
LIBRARIES = ("cpp-httplib", *DESKTOP_LIBRARIES)
# Tools that the script itself runs.
BASICS = ("dirname", "sed", "sh")
NEEDS = {
    "c++": "a C++17 compiler as c++",
    "cmake": "cmake, 3.25 or newer",
    "ninja": "ninja",
    "curl": "curl",
    "cpp-httplib": "the library cpp-httplib as pkg-config finds it",
    "Qt6Widgets": "Qt 6 as pkg-config finds it",
    "Qt6DBus": "Qt 6's D-Bus as pkg-config finds it",
    "xcb": "the library xcb as pkg-config finds it",
}


class System:
    """A PATH with links to the tools and nothing else, the libraries, and a `uname` that prints `name`."""

    def __init__(self, root, folder, name):
        self.script = root / "scripts/bootstrap"
        self.folder = folder
        for tool in (*BASICS, *TOOLS):
            (folder / tool).symlink_to(shutil.which(tool))
        for library in LIBRARIES:
            self.library(library).write_text(f"Name: {library}\nDescription: {library}\nVersion: 6\n")
        self.tool("uname", f"echo {name}")

    def library(self, name):
        """The file by which pkg-config finds a library."""
        return self.folder / f"{name}.pc"

    def tool(self, name, command):
        path = self.folder / name
        path.unlink(missing_ok=True)
        path.write_text(f"#!/bin/sh\n{command}\n")
        path.chmod(0o755)

    def lacks(self, what):
        """What the script reports as missing; empty if it succeeds."""
        environment = dict.fromkeys(("PATH", "PKG_CONFIG_LIBDIR"), str(self.folder))
        done = subprocess.run([self.script, what], env=environment, capture_output=True, text=True)
        if done.returncode == 0:
            assert (done.stdout, done.stderr) == ("", "")
            return []
        assert done.returncode == 1
        first, *lines = done.stderr.splitlines()
        assert first.endswith("found neither apt-get nor Homebrew to install what is missing:")
        return [line.strip() for line in lines]


@pytest.fixture(params=["Linux", "Darwin"])
def system(root, tmp_path, request):
    return System(root, tmp_path, request.param)


def test_it_succeeds_if_nothing_is_missing(system):
    assert system.lacks("run") == []
    assert system.lacks("desktop") == []


@pytest.mark.parametrize("tool", ["c++", "cmake", "ninja", "curl"])
def test_a_missing_tool_is_named(system, tool):
    (system.folder / tool).unlink()
    assert system.lacks("run") == [NEEDS[tool]]


def test_everything_that_is_missing_is_named_at_once(system):
    for tool in ("c++", "ninja", "pkg-config"):
        (system.folder / tool).unlink()
    assert system.lacks("run") == [NEEDS["c++"], NEEDS["ninja"], "pkg-config", NEEDS["cpp-httplib"]]


def test_a_missing_library_is_named(system):
    system.library("cpp-httplib").unlink()
    assert system.lacks("run") == [NEEDS["cpp-httplib"]]


@pytest.mark.parametrize("version, is_new", [("3.24.9", False), ("3.25.0", True), ("4.1.2-rc1", True)])
def test_cmake_must_be_new_enough(system, version, is_new):
    system.tool("cmake", f"echo cmake version {version}")
    assert system.lacks("run") == ([] if is_new else [NEEDS["cmake"]])


@pytest.mark.parametrize("library", DESKTOP_LIBRARIES)
def test_the_interface_needs_more_libraries_except_on_a_mac(root, tmp_path, library):
    for name in ("Linux", "Darwin"):
        folder = tmp_path / name
        folder.mkdir()
        system = System(root, folder, name)
        system.library(library).unlink()
        assert system.lacks("run") == []
        assert system.lacks("desktop") == ([NEEDS[library]] if name == "Linux" else [])


@pytest.mark.parametrize("what, package", [("test", "shellcheck"), ("release", "dpkg-dev")])
def test_for_tests_and_releases_debians_packages_are_named(system, what, package):
    command = [system.script, what]
    done = subprocess.run(command, env={"PATH": str(system.folder)}, capture_output=True, text=True)
    assert (done.returncode, done.stdout) == (1, "")
    assert package in done.stderr.split()


class Debian(System):
    """A Debian on which only the given packages are installed. Its apt-get records its arguments; its
    package lists name GNUstep's version after an update."""

    def __init__(self, root, folder, version, *installed):
        super().__init__(root, folder, "Linux")
        self.asked = folder / "asked"
        for name in ("env", "id"):
            (folder / name).symlink_to(shutil.which(name))
        names = "|".join(installed) or "none"
        self.tool("dpkg-query", f'for name; do :; done; case $name in {names}) printf installed;; esac')
        self.tool("apt-get", f'echo "$@" >>"{self.asked}"; [ "$1" != update ] || : >"{folder}/lists"')
        depends = f"  Depends: libgnustep-gui{version}\\n  Depends: libgnustep-base-dev\\n"
        self.tool("apt-cache", f"[ ! -e '{folder}/lists' ] || printf '{depends}'")

    def installs(self, what):
        """The packages that the script installs."""
        subprocess.run(
            [self.script, what], env={"PATH": str(self.folder)}, check=True, capture_output=True
        )
        update, install = self.asked.read_text().splitlines()
        assert update == "update -qq"
        options = "install -y -qq --no-install-recommends "
        assert install.startswith(options)
        return install.removeprefix(options).split()


def test_on_debian_it_installs_what_is_missing(root, tmp_path):
    debian = Debian(root, tmp_path, "0.29", "cmake", "curl")
    assert debian.installs("run") == ["g++", "ninja-build", "pkg-config", "libcpp-httplib-dev"]


def test_the_drawing_backend_fits_the_gnustep_in_the_package_lists(root, tmp_path):
    debian = Debian(root, tmp_path, "0.32", "gnustep-back0.29-cairo")
    packages = debian.installs("test")
    assert [name for name in packages if name.startswith("gnustep-back")] == ["gnustep-back0.32-cairo"]
