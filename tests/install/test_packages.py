"""The packages: their contents and dependencies, running them unpacked, installing and removing them."""

import os
import platform
import re
import shutil
import subprocess

import pytest
from components import STOP_ORDER
from console import STOPPED
from desktop_session import run_behind_icon
from installed import PROGRAMS, Tree, files_of
from packages import make_packages, unpack
from test_install import CONFIG, INTERFACE, LAUNCHER, STANDINS, UNITS, configure

pytestmark = pytest.mark.linux

NAMES = ("tandrel", "tandrel-gui", "tandrel-standins")
KINDS = ("deb", "rpm", "gz")


@pytest.fixture(scope="session")
def packages(build, tmp_path_factory):
    return make_packages(build, tmp_path_factory.mktemp("packages"))


@pytest.fixture(scope="session")
def version(root):
    return (root / "VERSION").read_text().strip()


@pytest.fixture(scope="session")
def release():
    """This system's name and version, for example debian12."""
    found = platform.freedesktop_os_release()
    return found["ID"] + found.get("VERSION_ID", "")


def test_packages_are_named_after_their_contents_and_the_system_they_were_built_on(
    packages, version, release
):
    machine = os.uname().machine
    architecture = subprocess.check_output(["dpkg", "--print-architecture"], text=True).strip()
    names = {kind: {path.name for path in paths} for kind, paths in packages.items()}
    assert names == {
        "deb": {f"{name}_{version}+{release}_{architecture}.deb" for name in NAMES},
        "rpm": {f"{name}-{version}-1.{release}.{machine}.rpm" for name in NAMES},
        "gz": {f"tandrel-{version}-with-standins-{release}-{machine}.tar.gz"},
    }


def test_the_packages_are_reproducible(packages, build, tmp_path):
    again = make_packages(build, tmp_path)
    for kind in KINDS:
        for one, other in zip(packages[kind], again[kind], strict=True):
            assert one.read_bytes() == other.read_bytes(), one.name


def fields(package):
    """The fields of a .deb's control file; only the first line of a description."""
    text = subprocess.check_output(["dpkg-deb", "--field", package], text=True)
    rows = [line.partition(": ") for line in text.splitlines() if not line.startswith(" ")]
    return {name: value for name, _, value in rows}


def owner(pattern):
    """The package of this system that a file belongs to."""
    name, _, _ = subprocess.check_output(["dpkg", "--search", pattern], text=True).partition(":")
    return name


def names_in(relation):
    """The packages in a field such as Depends; only the first of alternatives."""
    return {entry.split()[0] for entry in relation.split(", ")}


def test_a_server_needs_no_desktop(packages, version, release):
    by_name = {found["Package"]: found for found in map(fields, packages["deb"])}
    assert set(by_name) == set(NAMES)
    assert names_in(by_name["tandrel"]["Depends"]) == {"curl", "libc6"}
    assert "tandrel-gui" not in by_name["tandrel"]["Recommends"]
    interface = by_name["tandrel-gui"]["Depends"]
    assert f"tandrel (= {version}+{release})" in interface.split(", ")
    assert {"libqt6widgets6", owner("*/qt6/plugins/platforms/libqxcb.so")} <= names_in(interface)
    assert "tandrel" in names_in(by_name["tandrel-standins"]["Depends"])
    assert "stand-ins" in by_name["tandrel-standins"]["Description"]


def installed_with(names):
    """The packages of this system that these packages depend on, and themselves."""
    command = ["apt-cache", "depends", "--recurse", "--installed", "--important", *names]
    lines = subprocess.check_output(command, text=True).splitlines()
    return {line for line in lines if not line.startswith((" ", "<"))}


def test_the_packages_that_an_archive_needs_are_documented(packages, root):
    """Each name brings what no other one does, and together they bring all dependencies of the .debs."""
    page = (root / "docs/installing.md").read_text()
    documented = re.search(r"An archive needs .*?`apt install ([^`]+)`", page, re.DOTALL)[1].split()
    needed = set().union(*(names_in(fields(package)["Depends"]) for package in packages["deb"]))
    needed -= set(NAMES)
    assert needed <= installed_with(documented)
    for name in documented:
        others = [other for other in documented if other != name]
        assert not needed <= installed_with(others), f"{name} is not needed"


def needs_of(package):
    """The requirements of a .rpm, without versions."""
    command = ["rpm", "--query", "--requires", "--package", package]
    return {line.split()[0] for line in subprocess.check_output(command, text=True).splitlines()}


def test_a_server_needs_no_desktop_with_rpm_either(packages, version):
    paths = {path.name.partition(f"-{version}")[0]: path for path in packages["rpm"]}
    assert set(paths) == set(NAMES)
    launcher, interface, standins = (needs_of(paths[name]) for name in NAMES)
    libraries = {need.partition(".so")[0] for need in launcher if ".so" in need}
    assert "curl" in launcher and libraries == {"libc", "ld-linux-x86-64"}
    assert {"tandrel", "libQt6Widgets.so.6()(64bit)"} <= interface
    assert "tandrel" in standins


def test_the_suites_own_programs_replace_the_stand_ins(root, folder):
    suite = folder / "suite"
    suite.mkdir()
    for name in PROGRAMS[1:]:
        (suite / name).write_text(f"#!/bin/sh\necho {name} of the suite\n")
    options = [f"-DTANDREL_SUITE_DIR={suite}", "-DCMAKE_SKIP_INSTALL_ALL_DEPENDENCY=ON"]
    made = configure(root, folder / "build", *options)
    assert made.returncode == 0, made.stderr
    # Nothing has to be built for this component.
    command = ["cpack", "-G", "DEB", "-D", "CPACK_COMPONENTS_ALL=suite", "-B", folder]
    subprocess.run(command, cwd=folder / "build", check=True, capture_output=True)
    (package,) = folder.glob("*.deb")
    found = fields(package)
    assert (found["Package"], found["Conflicts"]) == ("tandrel-suite", "tandrel-standins")
    prefix = unpack("deb", [package], folder / "system")
    for name in PROGRAMS[1:]:
        program = prefix / "libexec/tandrel" / name
        assert subprocess.check_output([program], text=True) == f"{name} of the suite\n"


def test_lintian_reports_no_error_or_warning(packages):
    command = ["lintian", "--allow-root", "--fail-on", "error,warning", *packages["deb"]]
    done = subprocess.run(command, capture_output=True, text=True)
    assert (done.returncode, done.stdout) == (0, "")


def test_debian_packages_have_all_installed_files(packages, folder):
    unpack("deb", packages["deb"], folder)
    moved = {
        "share/man/man1/tandrel.1": "share/man/man1/tandrel.1.gz",
        "share/zsh/site-functions/_tandrel": "share/zsh/vendor-completions/_tandrel",
    }
    files = LAUNCHER | UNITS | INTERFACE | STANDINS
    added = {f"share/doc/{name}/{file}" for name in NAMES for file in ("copyright", "changelog.gz")}
    added |= {f"share/lintian/overrides/{name}" for name in NAMES}
    assert files_of(folder / "usr") == {moved.get(file, file) for file in files} | added
    assert [path.name for path in folder.iterdir()] == ["usr"]


@pytest.mark.parametrize("kind", ["rpm", "gz"])
def test_other_packages_have_all_installed_files(packages, folder, kind):
    prefix = unpack(kind, packages[kind], folder)
    assert files_of(prefix) == LAUNCHER | UNITS | INTERFACE | STANDINS


def test_the_programs_are_stripped(packages, folder):
    prefix = unpack("gz", packages["gz"], folder)
    for name in (*PROGRAMS, "tdgui.so"):
        program = prefix / "libexec/tandrel" / name
        sections = subprocess.check_output(["readelf", "--sections", program], text=True)
        assert ".dynamic" in sections and ".symtab" not in sections


@pytest.fixture(params=KINDS)
def unpacked(packages, folder, ports, request):
    """The contents of one kind of package in an empty folder."""
    prefix = unpack(request.param, packages[request.param], folder)
    made = Tree(prefix, folder / "home", ports)
    made.record()
    yield made
    left = made.close()
    assert not left, f"left running: {left}"


def test_unpacked_it_runs_in_a_terminal_and_without_one(unpacked):
    run = unpacked.start_up(terminal="all")
    unpacked.wait_for_starts()
    run.interrupt()
    assert run.wait() == 0
    assert run.text.endswith(STOPPED)
    assert unpacked.events("stop") == STOP_ORDER
    run = unpacked.start_up(terminal=None)
    assert run.stop() == 0
    assert run.output.endswith(STOPPED)


def test_unpacked_it_runs_one_component(unpacked):
    command = [unpacked.launcher, "align", "two words"]
    done = subprocess.run(command, capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    assert done.stdout.splitlines()[1:] == ["argv[1]: two words"]


def test_unpacked_it_runs_behind_its_icon(unpacked):
    assert run_behind_icon(unpacked).endswith(STOPPED)
    assert unpacked.events("stop") == STOP_ORDER


def dpkg(folder, *arguments):
    """Runs dpkg for an empty system, in which no script can run; returns its warnings."""
    options = ["--root", folder, "--force-script-chrootless", "--force-depends"]
    done = subprocess.run(["dpkg", *options, *arguments], capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    return done.stderr


@pytest.fixture
def system(folder):
    """An empty system with the databases of dpkg and rpm."""
    made = folder / "system"
    for name in ("info", "updates"):
        (made / "var/lib/dpkg" / name).mkdir(parents=True)
    (made / "var/lib/dpkg/status").touch()
    (made / "var/lib/rpm").mkdir()
    return made


def run_once_as_root(system, ports, home):
    """Runs the installed launcher, which makes the settings folder, and saves settings there."""
    tree = Tree(system / "usr", home, ports)
    try:
        assert tree.start_up().stop() == 0
        (tree.prefix / CONFIG).write_text('{"http_port": 5000}\n')
    finally:
        assert tree.close() == []


@pytest.mark.root
def test_dpkg_removes_everything(packages, system, folder, ports):
    dpkg(system, "--install", *packages["deb"])
    run_once_as_root(system, ports, folder / "home")
    assert dpkg(system, "--remove", *NAMES) == ""
    assert not (system / "usr").exists()


def add_shell(system):
    """Copies what the packages' scripts need into a system."""
    for name in ("/bin/sh", "/bin/rm"):
        linked = subprocess.check_output(["ldd", name], text=True).split()
        for path in (name, *(word for word in linked if word.startswith("/"))):
            copy = system / path[1:]
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(path, copy)


def rpm(system, *arguments):
    """Runs rpm for a system; returns its warnings, except the known ones of Debian's builds of rpm (that
    Debian installs packages otherwise) and of systems in a folder."""
    command = ["rpm", "--root", system, "--dbpath", "/var/lib/rpm", "--nodeps", *arguments]
    done = subprocess.run(command, capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    known = ("rpm: ", "warning: private mounts in chroot")
    return [line for line in done.stderr.splitlines() if not line.startswith(known)]


@pytest.mark.root
def test_rpm_removes_everything(packages, system, folder, ports):
    add_shell(system)
    before = files_of(system)
    # Some of Debian's builds refuse to install without this option, others do not know it.
    option = ["--force-debian"]
    if subprocess.run(["rpm", *option, "--version"], capture_output=True).returncode != 0:
        option = []
    rpm(system, "--install", *option, *packages["rpm"])
    assert files_of(system) > before
    run_once_as_root(system, ports, folder / "home")
    assert rpm(system, "--erase", *NAMES) == []
    left = {path for path in files_of(system) - before if not path.startswith("var/")}
    assert left == set()
    assert not (system / "usr/libexec/tandrel").exists()
