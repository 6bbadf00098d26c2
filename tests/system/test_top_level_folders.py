"""A launcher in the root folder or directly below it, in a private root folder."""

import shutil
import subprocess
import tempfile

import pytest
import scripted_hub
from scripted_hub import DEFAULT_PORTS, SAVED, SAVED_PORTS


# Arguments: the new root folder, the command. The new root has the contents of the real one too.
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
    """The start of a command line: a root folder and a command to run in it follow."""
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
    pytest.skip("no permission to make a private root folder")


class TopLevel:
    """A root folder with the launcher and its hub in one of its folders."""

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
