"""Parses the documents of this tree: their commands, their links and the files that they name."""

import re
from pathlib import Path

ROOT = Path(__file__).parents[2]
README = Path("README.md")
COMMAND_BLOCKS = ("", "sh")  # the languages of blocks with commands
# A code span of several words is a command if the first is one of these.
COMMAND_WORDS = (
    *("apt", "apt-get", "brew", "cmake", "codesign", "cpack", "ctest", "curl", "dnf", "journalctl"),
    *("kill", "launchctl", "loginctl", "lsof", "open", "osascript", "pgrep", "pkill", "rm", "security", "ss"),
    *("ssh", "systemctl", "tccutil", "xattr", "xcrun"),
)


def documents():
    """The paths of all documents, relative to the tree."""
    found = (path.relative_to(ROOT) for path in ROOT.rglob("*.md"))
    return sorted(path for path in found if path.parts[0] != "build")


def _parts(path):
    """The text of a document outside its code blocks, and the blocks: language, line number, lines."""
    text, blocks, mark = [], [], None
    for number, line in enumerate((ROOT / path).read_text().splitlines(), 1):
        if line.startswith("```"):
            if mark is None:
                mark = line[3:].strip()
                blocks.append((mark, number, []))
            else:
                mark = None
        elif mark is None:
            text.append(line)
        else:
            blocks[-1][2].append(line)
    assert mark is None, f"{path}: a code block is not closed"
    return "\n".join(text), blocks


def marks(path):
    return {mark for mark, _, _ in _parts(path)[1]}


def _commands_of_block(lines):
    joined = re.sub(r"\\\n\s*", "", "\n".join(lines))
    without_comments = (re.sub(r"(^|\s+)#.*", "", line) for line in joined.splitlines())
    return [line.strip() for line in without_comments if line.strip()]


def spans(path):
    """The code spans of a document's text."""
    return re.findall(r"`([^`]+)`", _parts(path)[0])


def _is_command(span):
    first, _, _ = re.sub(r"^(\w+=\S+ )+", "", span).partition(" ")
    return " " in span and (first in COMMAND_WORDS or first.startswith("scripts/"))


def commands(path):
    """The commands of a document: first those of its blocks, then those in its text."""
    found = []
    for mark, _, lines in _parts(path)[1]:
        if mark in COMMAND_BLOCKS:
            found += _commands_of_block(lines)
    in_text = (" ".join(span.split()).replace("\\|", "|") for span in spans(path))  # | in a table
    return found + [span for span in in_text if _is_command(span)]


def links(path):
    """The targets of a document's links and pictures."""
    return re.findall(r"\]\(([^)\s]+)\)", _parts(path)[0])


def anchors(path):
    """The fragments that links may use for a document."""
    headings = re.findall(r"^#+ (.*)", _parts(path)[0], re.MULTILINE)
    return [re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings]
