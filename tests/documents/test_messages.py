"""The README explains messages that exist."""

import re

import console
import documents
import pytest

# Of the launcher's own messages those that a test of it knows; of others their source.
MESSAGES = [
    console.hub_silent(4466),
    console.hub_missing("/a/folder/td_hub"),
    console.LEFT_STOPPED.format("receiver"),
    console.NOT_STARTED.format("receiver"),
    (documents.ROOT / "launcher/launcher.cpp").read_text(),
    console.UNAVAILABLE,
]


def explained():
    """The first cells of the table below "It does not start" that are not empty."""
    _, _, section = (documents.ROOT / documents.README).read_text().partition("\n## It does not start\n")
    rows = section.partition("\n## ")[0].partition("| --- |")[2]
    return re.findall(r"^\| ([^|]+?) \|", rows, re.MULTILINE)


@pytest.mark.parametrize("message", explained())
def test_an_explained_message_exists(message):
    assert any(message in text for text in MESSAGES)


def test_messages_are_explained():
    assert len(explained()) >= 6
