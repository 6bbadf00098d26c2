"""scripts/fresh in a private clone. A root folder with busybox stands in for a Debian."""

import shutil
import subprocess
from pathlib import Path
from signal import SIGINT, SIGKILL, SIGTERM

import psutil
import pytest
from deadline import wait_until

pytestmark = [pytest.mark.linux, pytest.mark.root]

# Records its arguments; makes a root folder with a Debian's folders.
DEBOOTSTRAP = """#!/bin/sh
echo "$@" >>"$(dirname "$0")/debootstrapped"
[ "$2" != none ] || { echo "no such release"; exit 3; }
for folder in bin dev/pts etc mnt proc root sys tmp run; do mkdir -p "$3/$folder"; done
cp /bin/busybox "$3/bin"
"$3/bin/busybox" --install "$3/bin"
"""


class Fresh:
    """A clone of a tree with the script and the file `content`."""

    def __init__(self, root, folder):
        self.tree = folder / "a tree"
        self.copies = self.tree / "build/fresh"
        self.tools = folder / "tools"
        self.tools.mkdir()
        debootstrap = self.tools / "debootstrap"
        debootstrap.write_text(DEBOOTSTRAP)
        debootstrap.chmod(0o755)
        (self.tree / "scripts").mkdir(parents=True)
        shutil.copy2(root / "scripts/fresh", self.tree / "scripts")
        (self.tree / "content").write_text("committed")
        self.git("init", "--quiet")
        self.git("add", ".")
        self.git("-c", "user.name=test", "-c", "user.email=test@localhost", "commit", "-qm", "All")
        (self.tree / "content").write_text("not committed")
        self.started = []

    def git(self, *arguments):
        subprocess.run(["git", "-C", self.tree, *arguments], check=True)

    def command(self, *words):
        path = f"PATH={self.tools}:/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"
        return ["env", path, self.tree / "scripts/fresh", *words]

    def run(self, *words, **options):
        return subprocess.run(
            self.command(*words), capture_output=True, text=True, check=False, **options
        )

    def start(self, *words):
        pipes = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE}
        process = subprocess.Popen(self.command(*words), text=True, start_new_session=True, **pipes)
        self.started.append(process)
        return process

    def left_copies(self):
        return [path.name for path in self.copies.glob("*.run.*")]

    def processes(self):
        """The processes whose root folder or working folder is below the tree."""
        found = []
        for process in psutil.process_iter():
            try:
                folders = [Path(f"/proc/{process.pid}/{name}").readlink() for name in ("root", "cwd")]
            except OSError:  # it has ended
                continue
            found += [process for folder in folders if self.tree in (folder, *folder.parents)]
        return found

    def mounts(self):
        lines = Path("/proc/self/mountinfo").read_text().splitlines()
        return [line for line in lines if str(self.tree.parent.name) in line]

    def close(self):
        for process in self.started:
            process.kill()
            process.wait()
            process.stdin.close()
            process.stdout.close()


@pytest.fixture
def fresh(root, folder):
    made = Fresh(root, folder)
    yield made
    made.close()
    wait_until(lambda: not made.processes(), "the processes to end")
    assert made.mounts() == []


def test_the_command_runs_in_a_clone_with_its_arguments_and_status(fresh):
    done = fresh.run("old", "sh", "-c", 'cat content; echo "$1"; id -u; exit 7', "sh", "a  b")
    assert (done.returncode, done.stdout) == (7, "committeda  b\n0\n")
    assert fresh.left_copies() == []


def test_a_release_is_fetched_once_and_each_run_gets_it_unchanged(fresh):
    for _ in range(2):
        done = fresh.run("old", "sh", "-c", "ls /left; touch /left")
        assert done.stderr.count("No such file") == 1
    (noted,) = (fresh.tools / "debootstrapped").read_text().splitlines()
    variant, release, folder, mirror = noted.replace(str(fresh.tree), "").split()
    assert (variant, release, folder) == ("--variant=minbase", "old", "/build/fresh/old.new")
    assert mirror in subprocess.run(
        ["apt-get", "indextargets"], capture_output=True, text=True, check=True
    ).stdout


def test_the_command_has_processes_mounts_and_temporary_files_of_its_own(fresh):
    shown = "ps -o comm; touch /tmp/td-fresh; mount -t tmpfs tmpfs /mnt; test -c /dev/ptmx"
    done = fresh.run("old", "sh", "-c", shown)
    assert (done.returncode, done.stdout.split()) == (0, ["COMMAND", "sh", "sh", "ps"])
    assert not Path("/tmp/td-fresh").exists()


def test_what_the_command_leaves_running_ends_with_it(fresh):
    done = fresh.run("old", "sh", "-c", "sleep 1000 >/dev/null 2>&1 & echo started")
    assert (done.returncode, done.stdout) == (0, "started\n")


def test_standard_input_reaches_the_command(fresh):
    assert fresh.run("old", "cat", input="a line\n").stdout == "a line\n"


def test_ctrl_c_ends_the_command_and_leaves_nothing(fresh):
    process = fresh.start("old", "sh", "-c", "echo up; sleep 1000; exit 0")
    assert process.stdout.readline() == "up\n"
    subprocess.run(["kill", "-s", "INT", "--", f"-{process.pid}"], check=True)
    assert process.wait() == 128 + SIGINT
    assert fresh.left_copies() == []


def test_a_command_may_handle_ctrl_c_itself(fresh):
    handling = "trap 'echo handled; exit 0' INT; echo up; while :; do sleep 0.1; done"
    process = fresh.start("old", "sh", "-c", handling)
    assert process.stdout.readline() == "up\n"
    subprocess.run(["kill", "-s", "INT", "--", f"-{process.pid}"], check=True)
    assert process.stdout.read() == "handled\n"
    assert process.wait() == 0


def test_sigterm_ends_the_command_and_leaves_nothing(fresh):
    process = fresh.start("old", "sh", "-c", "trap '' TERM; echo up; sleep 1000")
    assert process.stdout.readline() == "up\n"
    process.send_signal(SIGTERM)
    assert process.wait() == 128 + SIGKILL
    assert fresh.left_copies() == []


def test_the_next_run_removes_the_copy_of_a_script_that_was_killed(fresh):
    process = fresh.start("old", "sh", "-c", "echo up; sleep 1000")
    assert process.stdout.readline() == "up\n"
    process.kill()
    process.wait()
    wait_until(lambda: not fresh.processes(), "the processes to end")
    assert len(fresh.left_copies()) == 1
    assert fresh.run("old", "true").returncode == 0
    assert fresh.left_copies() == []


def test_the_copy_of_a_running_command_stays(fresh):
    process = fresh.start("old", "sh", "-c", "echo up; read line; cat content")
    assert process.stdout.readline() == "up\n"
    assert fresh.run("old", "true").returncode == 0
    assert len(fresh.left_copies()) == 1


def test_a_release_that_cannot_be_fetched_is_reported(fresh):
    done = fresh.run("none", "true")
    log = fresh.copies / "none.log"
    assert done.returncode == 1
    assert done.stderr == f"{fresh.tree}/scripts/fresh: could not make a Debian none: see {log}\n"
    assert log.read_text() == "no such release\n"
    assert not (fresh.copies / "none").exists()


def test_it_prints_its_usage(fresh):
    done = fresh.run("old")
    assert done.returncode == 2
    assert done.stderr == f"usage: {fresh.tree}/scripts/fresh RELEASE COMMAND...\n"


def test_it_says_that_it_needs_root(fresh):
    words = ["setpriv", "--reuid=65534", "--clear-groups", *fresh.command("old", "true")]
    done = subprocess.run(words, capture_output=True, text=True, check=False)
    assert done.returncode == 1
    assert "must be root" in done.stderr
