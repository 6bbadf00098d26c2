"""What bash, zsh and fish complete after `tandrel`, tested in the shells themselves.

In bash and zsh a key inserts all completions into the line, which is then run with a `tandrel` that writes its
arguments to a file. fish can list its completions.
"""

import shlex
import shutil
import subprocess

import pexpect
import pytest
from deadline import DEADLINE, wait_until

pytestmark = pytest.mark.linux

WORDS = ["hub", "sender", "receiver", "align"]
OPTIONS = ["--no-sender", "--no-receiver", "--browser", "--no-browser", "--http-port", "--udp-port"]
OPTIONS += ["--verbose"]
HELP = ["--help", "-h"]
FILES = ["a-file", "b-file"]
RECORDER = """#!/bin/sh
printf '%s\\n' "$@" >../arguments.new
mv ../arguments.new ../arguments
"""
INSERT_KEY = "\x18c"  # Control-x c


class Shells:
    """A folder with two files to complete, and a `tandrel` that records its arguments."""

    def __init__(self, tree):
        self.share = tree.prefix / "share"
        self.files = tree.home / "files"
        self.files.mkdir()
        for name in FILES:
            (self.files / name).touch()
        commands = tree.home / "bin"
        commands.mkdir()
        (commands / "tandrel").write_text(RECORDER)
        (commands / "tandrel").chmod(0o755)
        self.arguments = tree.home / "arguments"
        self.environment = {**tree.environment, "TERM": "dumb", "XDG_DATA_DIRS": str(self.share)}
        self.environment["PATH"] = f"{commands}:{self.environment['PATH']}"

    def bash(self):
        """The package bash-completion finds the file through XDG_DATA_DIRS."""
        set_up = [
            "source /usr/share/bash-completion/bash_completion",
            r"""bind '"\C-xc": insert-completions'""",
        ]
        return self._inserting("bash", ["--norc", "--noprofile", "-i"], set_up)

    def zsh(self):
        """It finds the file through fpath."""
        functions = shlex.quote(str(self.share / "zsh/site-functions"))
        set_up = [
            f"fpath=({functions} $fpath)",
            "autoload -U compinit; compinit -D",
            "zle -C all-matches complete-word _generic",
            "zstyle ':completion:all-matches::::' completer _all_matches _complete",
            "zstyle ':completion:all-matches:*' insert true",
            "bindkey '^Xc' all-matches",
        ]
        return self._inserting("zsh", ["-f", "-i"], set_up)

    def _inserting(self, name, options, set_up):
        shell = pexpect.spawn(
            name, options, cwd=self.files, env=self.environment, timeout=DEADLINE, echo=False
        )
        for line in (*set_up, "echo set-up-$((1 + 1))"):
            shell.sendline(line)
        shell.expect_exact("set-up-2")

        def completions(line):
            shell.send(f"tandrel {line}{INSERT_KEY}\r")
            wait_until(self.arguments.exists, f"the arguments of {line!r}")
            words = self.arguments.read_text().splitlines()
            self.arguments.unlink()
            before = line.split(" ")[:-1]
            assert words[: len(before)] == before
            return words[len(before) :]

        return completions, lambda: shell.close(force=True)

    def fish(self):
        """It finds the file through XDG_DATA_DIRS."""

        def completions(line):
            command = ["fish", "--command", f"complete --do-complete {shlex.quote('tandrel ' + line)}"]
            done = subprocess.run(
                command, cwd=self.files, env=self.environment, capture_output=True, text=True
            )
            assert (done.returncode, done.stderr) == (0, "")
            return [row.partition("\t")[0] for row in done.stdout.splitlines()]

        return completions, lambda: None


@pytest.fixture(params=["bash", "zsh", "fish"])
def shell(tree, request):
    """A function that returns the completions of the last word in a line after "tandrel "."""
    assert shutil.which(request.param)
    completions, close = getattr(Shells(tree), request.param)()
    yield completions
    close()


def starting_with(beginning, words):
    return [word for word in words if word.startswith(beginning)]


def test_the_components_come_first_and_the_options_after_them(shell):
    assert shell("") == WORDS + OPTIONS + HELP
    assert shell("--") == starting_with("--", OPTIONS + HELP)
    assert shell("re") == ["receiver"]
    assert shell("--n") == starting_with("--n", OPTIONS)


def test_after_an_option_only_options_are_offered(shell):
    assert shell("--no-sender ") == OPTIONS
    assert shell("--no-sender --verbose --no-r") == ["--no-receiver"]
    assert shell("--http-port 5000 ") == OPTIONS


def test_a_port_is_not_completed(shell):
    for option in ("--http-port", "--udp-port"):
        assert shell(f"{option} ") == []
        assert shell(f"{option} a") in ([], ["a"])  # what was typed stays in the line
        # The word after the option is the port, even if it looks like an option.
        assert shell(f"{option} --udp-port --n") == starting_with("--n", OPTIONS)


def test_after_a_component_files_are_offered(shell):
    for word in WORDS:
        assert shell(f"{word} ") == FILES
        assert shell(f"{word} --hub b") == ["b-file"]


def test_nothing_follows_help(shell):
    for word in HELP:
        assert shell(f"{word} ") == []
