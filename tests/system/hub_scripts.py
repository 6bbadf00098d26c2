"""Scripts that replace the hub and start the stand-in indirectly."""

import os

# Waits for `release`, and then becomes the stand-in.
_HELD = """#!/bin/sh
echo $$ >> "$0.starts"
read -r _ < "$0.release"
exec {hub} "$@"
"""


def move_hub(suite):
    """Moves the stand-in to another folder, makes it record its events, and returns its path."""
    path = suite.folder / "moved" / "td_hub"
    path.parent.mkdir()
    suite.component("hub").rename(path)
    path.with_name("td_hub.behaviour").write_text(f"record={suite.folder}/events.jsonl\n")
    return path


def hold_hub(suite):
    """From its next start on, the hub does nothing until `release`."""
    os.mkfifo(suite.folder / "td_hub.release")
    suite.script("td_hub", _HELD.format(hub=move_hub(suite)))


def release(suite):
    """Lets the held hub continue; waits for its start if necessary."""
    (suite.folder / "td_hub.release").write_text("\n")


def held_starts(suite):
    """The process ids of the held hub's starts, as text."""
    path = suite.folder / "td_hub.starts"
    return path.read_text().split() if path.exists() else []
