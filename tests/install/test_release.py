"""scripts/release in a private repository, with tools that make small files instead of packages."""

import hashlib
import os
import shutil
import subprocess
import tarfile

import pytest

EPOCH = 1700000000
VERSION = "1.2.3+4"
TOOLS = {
    "cmake": """printf '%s\\n' "cmake $*" >>"$CALLS"
[ "${FAILING:-}" != cmake ] || { echo the compiler has failed; exit 3; }""",
    "cpack": """printf '%s\\n' "cpack $*" >>"$CALLS"
while [ "$1" != -B ]; do shift; done
mkdir -p "$2/_CPack_Packages"
for kind in deb rpm tar.gz; do echo "${CONTENTS:-} $SOURCE_DATE_EPOCH" >"$2/tandrel-made.$kind"; done""",
    "uname": """echo "${SYSTEM:-Linux}" """,
}
MAC_APP = """#!/bin/sh
cd "$(dirname "$0")/.."
mkdir build
echo "image with $TANDREL_SUITE_DIR" >build/Tandrel.dmg
"""


def executable(path, text):
    path.write_text(text)
    path.chmod(0o755)


class Repository:
    """A repository with one commit: the script, what it calls, and a file."""

    def __init__(self, root, folder):
        self.folder = folder / "the tree"
        scripts = self.folder / "scripts"
        scripts.mkdir(parents=True)
        shutil.copy(root / "scripts/release", scripts)
        executable(scripts / "bootstrap", '#!/bin/sh\necho "bootstrap $*" >>"$CALLS"\n')
        executable(scripts / "mac-app", MAC_APP)
        (self.folder / "VERSION").write_text(f"{VERSION}\n")
        (self.folder / ".gitignore").write_text("/build/\n")
        tools = folder / "bin"
        tools.mkdir()
        for name, text in TOOLS.items():
            executable(tools / name, f"#!/bin/sh\nset -e\n{text}\n")
        self.calls_file = folder / "calls"
        self.environment = {
            **os.environ,
            "PATH": f"{tools}:{os.environ['PATH']}",
            "CALLS": str(self.calls_file),
            "TMPDIR": str(folder),
            "GIT_CONFIG_GLOBAL": "/dev/null",
        }
        self.environment.pop("TANDREL_SUITE_DIR", None)
        self.git("init", "-q")
        self.commit()
        self.before = set(folder.iterdir())

    def git(self, *arguments):
        moment = f"{EPOCH} +0900"
        dates = {"GIT_AUTHOR_DATE": moment, "GIT_COMMITTER_DATE": moment}
        who = ["-c", "user.name=Somebody", "-c", "user.email=somebody@localhost"]
        command = ["git", "-C", self.folder, *who, *arguments]
        subprocess.run(command, env={**self.environment, **dates}, check=True)

    def commit(self):
        self.git("add", "-A")
        self.git("commit", "-q", "-m", "One commit")

    def run(self, *arguments, **variables):
        return subprocess.run(
            [self.folder / "scripts/release", *arguments],
            cwd=self.folder.parent,
            env={**self.environment, **variables},
            capture_output=True,
            text=True,
        )

    def calls(self):
        return self.calls_file.read_text().splitlines() if self.calls_file.exists() else []

    def left(self):
        """The new files beside the repository."""
        return {path.name for path in set(self.folder.parent.iterdir()) - self.before}


@pytest.fixture
def repository(root, tmp_path):
    return Repository(root, tmp_path)


def sums_of(folder):
    files = sorted(path for path in folder.iterdir() if path.name != "SHA256SUMS")
    lines = [f"{hashlib.sha256(path.read_bytes()).hexdigest()}  {path.name}\n" for path in files]
    return "".join(lines)


def test_all_files_are_made_with_checksums(repository):
    done = repository.run()
    assert done.returncode == 0, done.stderr
    made = repository.folder / "build/release"
    sources = f"tandrel-{VERSION}.tar.gz"
    packages = {f"tandrel-made.{kind}" for kind in ("deb", "rpm", "tar.gz")}
    assert {path.name for path in made.iterdir()} == {"SHA256SUMS", sources, *packages}
    assert (made / "SHA256SUMS").read_text() == sums_of(made) == done.stdout
    assert repository.left() == {"calls"}


def test_tools_are_installed_first_and_files_have_the_commits_time(repository):
    assert repository.run("made").returncode == 0
    names = [call.split()[0] for call in repository.calls()]
    assert names == ["bootstrap", "cmake", "cmake", "cpack"]
    assert repository.calls()[0] == "bootstrap release"
    made = repository.folder.parent / "made"
    assert (made / "tandrel-made.deb").read_text() == f" {EPOCH}\n"


def test_the_sources_are_those_of_the_commit(repository):
    assert repository.run("made").returncode == 0
    with tarfile.open(repository.folder.parent / "made" / f"tandrel-{VERSION}.tar.gz") as archive:
        files = {member.name: member for member in archive.getmembers() if member.isfile()}
        top = f"tandrel-{VERSION}"
        assert set(files) == {
            *(f"{top}/scripts/{name}" for name in ("bootstrap", "mac-app", "release")),
            *(f"{top}/{name}" for name in ("VERSION", ".gitignore")),
        }
        assert {member.mtime for member in files.values()} == {EPOCH}


def test_a_tree_that_differs_from_its_commit_is_refused(repository):
    (repository.folder / "new").touch()
    done = repository.run("made")
    assert done.returncode == 1
    assert "would lack what is not committed" in done.stderr
    (repository.folder / "new").unlink()
    (repository.folder / "VERSION").write_text("2.0.0+1\n")
    assert repository.run("made").returncode == 1
    assert set(repository.calls()) == {"bootstrap release"}  # which installs git
    assert repository.left() == {"calls"}


def test_an_existing_folder_is_not_changed(repository):
    assert repository.run("made").returncode == 0
    done = repository.run("made", CONTENTS="other")
    assert done.returncode == 1
    assert done.stderr.endswith("release: made already exists\n")
    assert (repository.folder.parent / "made/tandrel-made.deb").read_text() == f" {EPOCH}\n"


def test_again_fails_if_a_file_differs(repository):
    assert repository.run("made").returncode == 0
    assert repository.run("--again", "made", "again").returncode == 0
    done = repository.run("--again", "made", "other", CONTENTS="other")
    assert done.returncode == 1
    assert "these files differ from those in " in done.stderr
    assert "tandrel-made.deb" in done.stdout and f"tandrel-{VERSION}" in done.stdout


def test_the_suites_folder_is_passed_to_the_build(repository):
    suite = repository.folder.parent / "the suite"
    suite.mkdir()
    assert repository.run("made", TANDREL_SUITE_DIR="the suite").returncode == 0
    assert repository.calls()[1].endswith(f" -DTANDREL_SUITE_DIR:PATH={suite}")


def test_the_packages_maintainer_is_passed_to_the_build(repository):
    assert repository.run("made").returncode == 0
    assert "TANDREL_CONTACT" not in repository.calls()[1]
    assert repository.run("again", TANDREL_CONTACT="Some Body <a@b.c>").returncode == 0
    assert repository.calls()[5].endswith(" -DTANDREL_CONTACT:STRING=Some Body <a@b.c>")


def test_a_failure_is_shown_and_leaves_nothing(repository):
    done = repository.run("made", FAILING="cmake")
    assert done.returncode == 1
    assert (done.stdout, done.stderr) == ("", "the compiler has failed\n")
    assert repository.left() == {"calls"}


def test_on_a_mac_the_image_is_made(repository):
    suite = repository.folder.parent / "suite"
    suite.mkdir()
    done = repository.run("made", SYSTEM="Darwin", TANDREL_SUITE_DIR="suite")
    assert done.returncode == 0, done.stderr
    made = repository.folder.parent / "made"
    assert {path.name for path in made.iterdir()} == {"SHA256SUMS", "Tandrel.dmg"}
    assert (made / "Tandrel.dmg").read_text() == f"image with {suite}\n"
    assert (made / "SHA256SUMS").read_text() == sums_of(made)


def test_an_unknown_option_is_refused(repository):
    done = repository.run("--help")
    assert done.returncode == 2
    assert done.stderr.startswith("usage: ")
    assert repository.calls() == []
