"""The continuous integration's description, and the script that publishes a release."""

import fnmatch
import os
import shlex
import subprocess
from hashlib import sha256

import pytest
import yaml


@pytest.fixture(scope="module")
def workflow(root):
    # As a YAML 1.1 value the key "on" would be the truth value; as a string it is "on".
    text = (root / ".github/workflows/ci.yml").read_text()
    return yaml.load(text, Loader=yaml.BaseLoader)


def steps_of(workflow):
    return [step for job in workflow["jobs"].values() for step in job["steps"]]


def test_every_push_and_pull_request_is_checked(workflow):
    assert workflow["on"] == {"push": "", "pull_request": ""}
    assert workflow["permissions"] == {"contents": "read"}


def test_the_front_doors_are_run_on_linux_and_on_both_processors_of_a_mac(workflow):
    jobs = workflow["jobs"]
    for job in ("linux", "macos"):
        commands = [step["run"] for step in jobs[job]["steps"] if "run" in step]
        assert commands[0] == "scripts/start-stop"
        assert commands[-1] == "scripts/test"
    for job in ("linux", "packages"):
        assert jobs[job]["container"].get("image") == "debian:${{ matrix.release }}"
        assert jobs[job]["strategy"]["matrix"]["release"] == ["12", "13"]
    assert "scripts/run --menu-bar --no-browser" in [step.get("run") for step in jobs["linux"]["steps"]]
    processors = [entry["processor"] for entry in jobs["macos"]["strategy"]["matrix"]["include"]]
    assert processors == ["x86_64", "arm64"]
    assert "scripts/mac-app" in [step.get("run") for step in jobs["macos"]["steps"]]


def test_every_command_is_one_script_of_this_tree(workflow, root):
    commands = [step["run"] for step in steps_of(workflow) if "run" in step]
    assert len(commands) >= 5
    for command in commands:
        script = shlex.split(command)[0]
        assert script.startswith("scripts/") and not set(command) & set(";&|\n")
        assert os.access(root / script, os.X_OK)


def test_every_job_ends_in_time_and_every_action_has_a_version(workflow):
    assert all(int(job["timeout-minutes"]) <= 90 for job in workflow["jobs"].values())
    for step in steps_of(workflow):
        assert ("run" in step) != ("uses" in step)
        if "uses" in step:
            action, _, version = step["uses"].partition("@")
            assert action.startswith("actions/") and version.startswith("v")


def test_only_a_tag_is_released_and_only_after_everything_else(workflow):
    release = workflow["jobs"]["release"]
    assert release["if"] == "startsWith(github.ref, 'refs/tags/v')"
    assert set(release["needs"]) == set(workflow["jobs"]) - {"release"}
    assert release["permissions"] == {"contents": "write"}


def test_the_packages_are_made_twice_and_must_be_the_same(workflow):
    commands = [step["run"] for step in workflow["jobs"]["packages"]["steps"] if "run" in step]
    assert commands == [
        "scripts/bootstrap release",
        "scripts/release build/release",
        "scripts/release --again build/release build/again",
    ]


def test_everything_that_was_made_is_published(workflow):
    made = {step["with"]["name"] for step in steps_of(workflow) if "upload" in step.get("uses", "")}
    *downloads, publish = workflow["jobs"]["release"]["steps"][1:]
    folders = {step["with"]["path"] for step in downloads}
    patterns = [step["with"]["pattern"] for step in downloads]
    taken = {name for name in made for pattern in patterns if fnmatch.fnmatchcase(name, pattern)}
    assert taken == {"packages-${{ matrix.release }}", "application-${{ matrix.processor }}"}
    assert folders == {"images", "packages"}
    command = 'scripts/publish "$GITHUB_REF_NAME" images/*.dmg packages/tandrel*'
    assert publish["run"] == command


# Of the last file, which is only there now, a copy.
RECORDER = """#!/bin/sh
for last; do :; done
cp "$last" sums
printf '%s\\n' "$@" > published
"""


class Publisher:
    """scripts/publish with a tool that records what is published, in a folder with two images."""

    def __init__(self, root, folder):
        self.script = root / "scripts/publish"
        self.folder = folder
        self.version = (root / "VERSION").read_text().strip()
        (folder / "gh").write_text(RECORDER)
        (folder / "gh").chmod(0o755)
        for name in ("a.dmg", "b.dmg"):
            (folder / name).write_text(name)

    def run(self, *arguments):
        """The exit status and what was published, None when nothing was."""
        environment = {"PATH": f"{self.folder}:{os.environ['PATH']}"}
        command = [self.script, *arguments]
        done = subprocess.run(command, cwd=self.folder, env=environment, capture_output=True)
        published = self.folder / "published"
        return done.returncode, published.read_text().splitlines() if published.exists() else None


@pytest.fixture
def release(root, tmp_path):
    return Publisher(root, tmp_path)


def test_the_files_are_published_under_the_versions_tag_with_their_checksums(release):
    tag = f"v{release.version}"
    title = f"Tandrel {release.version}"
    options = ["--verify-tag", "--title", title, "--generate-notes"]
    other = release.folder / "other"
    other.mkdir()
    (release.folder / "b.dmg").rename(other / "b.dmg")
    status, published = release.run(tag, "a.dmg", "other/b.dmg")
    assert status == 0
    *published, sums = published
    assert published == ["release", "create", tag, *options, "a.dmg", "other/b.dmg"]
    assert sums.endswith("/SHA256SUMS") and not os.path.exists(sums)
    expected = [f"{sha256(name.encode()).hexdigest()}  {name}\n" for name in ("a.dmg", "b.dmg")]
    assert (release.folder / "sums").read_text() == "".join(expected)


def test_a_tag_of_another_version_is_refused(release):
    assert release.run("v0.0.1+1", "a.dmg") == (1, None)
    assert release.run(release.version, "a.dmg") == (1, None)


def test_a_release_needs_files_that_exist(release):
    assert release.run(f"v{release.version}") == (2, None)
    assert release.run(f"v{release.version}", "a.dmg", "missing.dmg") == (1, None)
