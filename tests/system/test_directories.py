"""Where the launcher looks for its components and its settings.

tests/unit/directories_test.cpp also tests the paths of bundles and the modes of folders.
"""

import os
import shutil
import subprocess
import sys
from pathlib import Path

import console
import pytest
import scripted_hub
import system
from components import COMPONENTS
from console import READY
from deadline import wait_until
from scripted_hub import DEFAULT_PORTS, SAVED, SAVED_PORTS


def folder_of_launcher(suite, command, **options):
    """The folder from which a launcher started by `command` starts the align component."""
    options.setdefault("cwd", suite.folder)
    done = subprocess.run([*command, "align"], stdout=subprocess.PIPE, check=True, **options)
    path = done.stdout.splitlines()[0].removeprefix(b"argv[0]: ")
    assert path.endswith(b"td_align")
    return path.removesuffix(b"td_align").decode()


def test_the_launchers_path_is_used_as_given(suite):
    folder = suite.folder
    (folder / "inner").mkdir()
    paths = ["{}/launcher", "./launcher", "{}/./inner/../launcher", "inner//..//launcher"]
    for path in (path.format(folder) for path in paths):
        known = system.path_of_launcher(path, folder)
        assert folder_of_launcher(suite, [path]) == known.removesuffix("launcher")


def test_a_launcher_found_in_path_uses_that_folder(suite):
    environment = {**suite.environment, "PATH": f"{suite.folder}:{os.environ['PATH']}"}
    shell = ["/bin/sh", "-c", 'launcher "$@"', "sh"]
    assert folder_of_launcher(suite, shell, cwd="/", env=environment) == f"{suite.folder}/"


def test_a_path_without_a_slash_means_the_working_folder(suite):
    execute = "import os, sys; os.execv(sys.argv[1], sys.argv[1:])"
    command = [sys.executable, "-c", execute, "launcher"]
    known = system.path_of_launcher("launcher", suite.folder)
    assert folder_of_launcher(suite, command) == (known.removesuffix("launcher") or "./")
    run = suite.start(*command[1:], "--unknown", program=sys.executable)
    assert run.wait() == 1
    assert suite.settings.parent.is_dir()


def test_a_path_of_the_maximum_length_works(suite):
    longest = os.pathconf(suite.folder, "PC_PATH_MAX") - 1
    suite.script("td_align", "#!/bin/sh\necho \"argv[0]: $0\"\n")
    folder = str(suite.folder) + "/"
    room = longest - len(folder) - len("launcher")
    path = folder + "./" * (room // 2) + "/" * (room % 2) + "launcher"
    assert len(path) == longest
    assert folder_of_launcher(suite, [path]) == path.removesuffix("launcher")


@pytest.fixture
def linked(suite):
    """A folder with only links to the launcher and to two components."""
    folder = suite.folder / "linked"
    folder.mkdir()
    for name in ("launcher", "td_align", "td_hub"):
        (folder / name).symlink_to(suite.folder / name)
    return folder


def test_components_are_looked_for_beside_a_link_to_the_launcher(suite, linked):
    assert folder_of_launcher(suite, [linked / "launcher"]) == f"{linked}/"
    run = suite.start("sender", program=linked / "launcher")
    assert run.wait() == 1
    assert run.errors == console.component_missing("sender", linked / "td_sender").encode()


def test_settings_are_looked_for_beside_a_link_to_the_launcher(suite, linked):
    scripted_hub.make_failing(suite)
    suite.save_settings(SAVED)
    launcher = linked / "launcher"
    assert scripted_hub.ports_of_failing_run(suite, program=launcher) == DEFAULT_PORTS
    (linked / "config" / "launcher.json").write_bytes(SAVED)
    assert scripted_hub.ports_of_failing_run(suite, program=launcher) == SAVED_PORTS


def test_a_linked_folder_in_the_path_is_not_resolved(suite):
    (suite.folder / "alias").symlink_to(suite.folder)
    launcher = suite.folder / "alias" / "launcher"
    assert folder_of_launcher(suite, [launcher]) == f"{suite.folder}/alias/"


def make_config(suite, launcher=None, environment=None, **options):
    """Runs the launcher with an unknown option: it makes the settings folder, and ends."""
    run = suite.start("--unknown", program=launcher, environment=environment, **options)
    assert run.wait() == 1
    assert run.errors == b"Tandrel: unknown option '--unknown'\n\n"


@pytest.mark.parametrize("umask, mode", [(0o000, 0o755), (0o077, 0o700)])
def test_the_config_folder_is_made_beside_the_launcher(suite, umask, mode):
    make_config(suite, umask=umask)
    assert suite.settings.parent.stat().st_mode & 0o7777 == mode
    assert list(suite.settings.parent.iterdir()) == []


def test_outside_a_bundle_the_home_folder_is_not_used(suite):
    scripted_hub.make_failing(suite)
    support = suite.home / "Library" / "Application Support"
    (support / "Tandrel").mkdir(parents=True)
    (support / "Tandrel" / "launcher.json").write_bytes(SAVED)
    assert scripted_hub.ports_of_failing_run(suite) == DEFAULT_PORTS
    suite.save_settings(SAVED)
    assert scripted_hub.ports_of_failing_run(suite) == SAVED_PORTS


def test_with_a_file_named_config_the_settings_lie_beside_the_launcher(suite):
    scripted_hub.make_failing(suite)
    (suite.folder / "config").write_bytes(b"a file")
    assert scripted_hub.ports_of_failing_run(suite) == DEFAULT_PORTS
    (suite.folder / "launcher.json").write_bytes(SAVED)
    assert scripted_hub.ports_of_failing_run(suite) == SAVED_PORTS
    assert (suite.folder / "config").read_bytes() == b"a file"


def test_config_may_be_a_link_to_a_folder(suite):
    scripted_hub.make_failing(suite)
    (suite.home / "launcher.json").write_bytes(SAVED)
    (suite.folder / "config").symlink_to(suite.home)
    assert scripted_hub.ports_of_failing_run(suite) == SAVED_PORTS


class Bundle:
    """The launcher in an application bundle, with a hub that records its ports."""

    def __init__(self, suite, inside="Contents/MacOS"):
        self.suite = suite
        self.folder = suite.folder / "Tandrel.app" / inside
        self.folder.mkdir(parents=True)
        self.launcher = self.folder / "launcher"
        shutil.move(suite.launcher, self.launcher)
        scripted_hub.make_failing(suite, path=self.folder / "td_hub")
        self.support = suite.home / "Library" / "Application Support"

    def ports(self, **variables):
        """The ports of a run with changed environment variables; None removes one."""
        environment = {**self.suite.environment, **variables}
        environment = {name: value for name, value in environment.items() if value is not None}
        return scripted_hub.ports_of_failing_run(
            self.suite, program=self.launcher, environment=environment
        )

    def check_portable(self, **variables):
        """Checks that runs with these variables read config/launcher.json in the bundle."""
        assert self.ports(**variables) == DEFAULT_PORTS
        (self.folder / "config" / "launcher.json").write_bytes(SAVED)
        assert self.ports(**variables) == SAVED_PORTS


@pytest.fixture
def bundle(suite):
    return Bundle(suite)


def test_in_a_bundle_the_settings_are_in_the_users_support_folder(suite, bundle):
    (suite.home / "Library").mkdir()
    assert bundle.ports() == DEFAULT_PORTS
    assert list((bundle.support / "Tandrel").iterdir()) == []
    (bundle.support / "Tandrel" / "launcher.json").write_bytes(SAVED)
    assert bundle.ports() == SAVED_PORTS
    assert not (bundle.folder / "config").exists()


def test_both_support_folders_are_made(suite, bundle):
    (suite.home / "Library").mkdir()
    make_config(suite, bundle.launcher, umask=0o027)
    assert bundle.support.stat().st_mode & 0o7777 == 0o750
    assert (bundle.support / "Tandrel").stat().st_mode & 0o7777 == 0o750


def test_a_relative_home_is_used_as_given(suite, bundle):
    (suite.home / "Library").mkdir()
    make_config(suite, bundle.launcher, {**suite.environment, "HOME": "home"})
    assert (bundle.support / "Tandrel").is_dir()


@pytest.mark.parametrize("home", [None, "/nonexistent/home"])
def test_in_a_bundle_without_a_home_the_layout_is_portable(suite, bundle, home):
    bundle.check_portable(HOME=home)
    assert list(suite.home.iterdir()) == []


def test_the_library_folder_of_the_home_is_not_made(suite, bundle):
    bundle.check_portable()  # a home without Library
    assert list(suite.home.iterdir()) == []


def test_with_a_file_instead_of_the_support_folder_the_layout_is_portable(suite, bundle):
    bundle.support.mkdir(parents=True)
    (bundle.support / "Tandrel").write_bytes(b"a file")
    bundle.check_portable()


def test_in_a_bundle_with_neither_folder_the_settings_lie_beside_the_launcher(suite, bundle):
    (bundle.folder / "config").write_bytes(b"a file")
    (bundle.folder / "launcher.json").write_bytes(SAVED)
    assert bundle.ports(HOME=None) == SAVED_PORTS


@pytest.mark.parametrize("inside", ["contents/macos", "Contents/MacOS/more"])
def test_similar_folder_names_are_no_bundles(suite, inside):
    (suite.home / "Library").mkdir()
    Bundle(suite, inside).check_portable()
    assert list((suite.home / "Library").iterdir()) == []


def test_a_run_in_a_bundle_finds_its_components_there(suite, bundle):
    for name in COMPONENTS:
        shutil.copy2(suite.component(name), bundle.folder / f"td_{name}")
    (suite.bin / "curl").unlink()
    (bundle.folder / "td_hub.behaviour").write_text("record=events.jsonl")
    run = suite.start(*suite.ports_options, "--no-browser", program=bundle.launcher)
    run.wait_for(READY)
    wait_until((bundle.folder / "events.jsonl").exists, "the hub's start")
    assert run.stop() == 0
    assert str(bundle.folder / "td_hub") in Path(bundle.folder / "events.jsonl").read_text()
