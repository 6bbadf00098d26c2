"""The messages that docs/troubleshooting.md explains exist."""

import re

import console
import documents
import pytest

PAGE = documents.ROOT / "docs/troubleshooting.md"
# Some messages are constants of the tests; the others are looked for in the source.
MESSAGES = [
    console.hub_silent(4466),
    console.hub_missing("/a/folder/td_hub"),
    console.LEFT_STOPPED.format("receiver"),
    console.NOT_STARTED.format("receiver"),
    (documents.ROOT / "launcher/launcher.cpp").read_text(),
    console.UNAVAILABLE,
]


def explained():
    """The first cells of the page's table that are not empty."""
    rows = PAGE.read_text().partition("| --- |")[2].partition("\n\n")[0]
    return re.findall(r"^\| ([^|]+?) \|", rows, re.MULTILINE)


@pytest.mark.parametrize("message", explained())
def test_an_explained_message_exists(message):
    assert any(message in text for text in MESSAGES)


def test_messages_are_explained():
    assert len(explained()) >= 6
