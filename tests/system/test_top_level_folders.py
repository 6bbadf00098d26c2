"""A launcher in the root folder or right below it, in a root folder made for the test."""

import shutil
import subprocess
import tempfile

import pytest
import scripted_hub
from scripted_hub import DEFAULT_PORTS, SAVED, SAVED_PORTS


# Takes the new root folder and the command. What the real root holds is there as well.
IN_NEW_ROOT = """
set -e
root=$1
shift
mount --make-rprivate /
for part in /*; do
  if [ -L $part ]; then
    [ -L $root$part ] || cp -P $part $root
  elif [ -d $part ]; then
    mkdir -p $root$part
    mount --rbind $part $root$part
  fi
done
exec chroot $root "$@"
"""


@pytest.fixture(scope="session")
def new_root(session_folder):
    """The command that runs what follows it, a root folder first, below that folder."""
    for unshare in (["unshare", "-m"], ["unshare", "-rm"]):
        command = [*unshare, "sh", "-c", IN_NEW_ROOT, "sh"]
        try:
            root = tempfile.mkdtemp(dir=session_folder)
            done = subprocess.run(
                [*command, root, "true"], stderr=subprocess.DEVNULL, check=False
            )
        except FileNotFoundError:
            pytest.skip("no unshare here")
        if done.returncode == 0:
            return command
    pytest.skip("no right to make a root folder of its own")


class TopLevel:
    """A root folder with the launcher and its hub in one of its own folders."""

    def __init__(self, suite, command, inside):
        self.suite = suite
        self.command = command
        self.root = suite.folder / "root"
        self.folder = self.root / inside
        self.folder.mkdir(parents=True)
        self.launcher = f"/{inside}/launcher".replace("//", "/")
        shutil.move(suite.launcher, self.folder / "launcher")
        scripted_hub.make_failing(suite, path=self.folder / "td_hub")

    def ports(self, home):
        return scripted_hub.ports_of_failing_run(
            self.suite,
            *self.command[1:],
            *(str(self.root), self.launcher),
            program=shutil.which(self.command[0]),
            environment={**self.suite.environment, "HOME": str(home)},
        )


def test_contents_macos_below_the_root_folder_is_a_bundle(suite, new_root):
    top = TopLevel(suite, new_root, "Contents/MacOS")
    support = suite.home / "Library" / "Application Support" / "Tandrel"
    support.mkdir(parents=True)
    (support / "launcher.json").write_bytes(SAVED)
    assert top.ports(suite.home) == SAVED_PORTS
    assert not (top.folder / "config").exists()


def test_an_empty_home_is_not_the_root_folder(suite, new_root):
    top = TopLevel(suite, new_root, "Contents/MacOS")
    (top.root / "Library").mkdir()
    assert top.ports("") == DEFAULT_PORTS
    (top.folder / "config" / "launcher.json").write_bytes(SAVED)
    assert top.ports("") == SAVED_PORTS
    assert list((top.root / "Library").iterdir()) == []


def test_a_launcher_in_the_root_folder_itself(suite, new_root):
    top = TopLevel(suite, new_root, "")
    assert top.ports(suite.home) == DEFAULT_PORTS
    (top.root / "config" / "launcher.json").write_bytes(SAVED)
    assert top.ports(suite.home) == SAVED_PORTS
