"""What figures are reckoned from, and the pages that they are written into."""

import re
import subprocess
import time

import icon
import measure
import phases
import pytest
import tables


def test_a_start_is_charged_with_what_waits_and_probes_leave():
    row = phases.start_row([(16, 1), (240, 3)], probe=12)
    assert row == {
        "taken": [16, 240],
        "waits": [0, 2 * phases.PROBE_INTERVAL],
        "probes": [12, 36],
        "overhead": [4, 4],
    }


def test_a_stop_has_one_wait_at_most_for_each_component():
    row = phases.stop_row([302, 201, 455])
    assert (row["waits"], row["overhead"]) == ([300, 200, 300], [2, 1, 155])


class ScriptedScreen:
    """Shows images, each for so many seconds from the first look on."""

    def __init__(self, *shown):
        self._shown = list(shown)
        self._changes = None

    def image(self, _rect):
        now = time.monotonic()
        if self._changes is None:
            self._changes = now
        while len(self._shown) > 1 and now >= self._changes + self._shown[0][1]:
            self._changes += self._shown.pop(0)[1]
        return self._shown[0][0]

    def last_change(self):
        return self._changes


def test_something_is_drawn_at_its_last_change():
    screen = ScriptedScreen(("empty", 0.05), ("half", 0.05), ("whole", None))
    since = icon.drawn(screen, None, "empty")
    assert screen.image(None) == "whole"
    assert since >= screen.last_change()
    assert time.monotonic() - since >= icon.STILL


def test_what_keeps_empty_is_not_drawn(monkeypatch):
    monkeypatch.setattr(icon, "DEADLINE", 0.2)
    with pytest.raises(AssertionError, match="nothing was drawn"):
        icon.drawn(ScriptedScreen(("empty", None)), None, "empty")


@pytest.fixture
def pages(monkeypatch, tmp_path):
    """Copies of the pages, to write into."""
    for name in "PAGE", "README":
        copy = tmp_path / name
        copy.write_text(getattr(measure, name).read_text())
        monkeypatch.setattr(measure, name, copy)


def figures():
    """A run with other figures in every cell, and with the rows that are shown."""
    passes = (measure.pass_through.DIRECT, measure.pass_through.ALIGN, "sh -c", "tini", "dumb-init")
    names = {
        "pass-through": (*passes, "tini-static", "catatonit"),
        "phases": (phases.AT_ONCE, phases.AFTER, phases.RESTART, phases.STOP),
        "idle": (measure.idle.TERMINAL, "supervisord", "s6-svscan"),
        "icon": (icon.LAUNCHER, icon.OTHER),
    }
    numbers = iter(range(101, 999))
    return {
        key: {
            name: {column: [next(numbers)] for column in measure.SECTIONS[key].COLUMNS[1]}
            for name in found
        }
        for key, found in names.items()
    }


def test_every_figure_is_written_into_its_page(pages):
    made = figures()
    described = dict(date="today", processor="a slow one", system="an old one")
    texts = {
        name: tables.section_table(section.COLUMNS, made[name])
        for name, section in measure.SECTIONS.items()
    }
    texts["machine"] = tables.table(["", ""], described.items())
    shown = measure.summary(described, made)
    measure.write(texts, shown)
    page = measure.PAGE.read_text()
    assert all(text in page for text in texts.values())
    assert shown in measure.README.read_text()
    assert page.count("<!-- scripts/bench: ") == len(texts)


def cells(text):
    """The cells of all tables without their headings."""
    rows = [line.strip("| ").split(" | ") for line in text.splitlines() if line.startswith("| ")]
    return [cell for row in rows for cell in row[1:]]


def test_the_readme_shows_what_the_page_has():
    """Both were written together."""
    _, _, rest = measure.README.read_text().partition("<!-- scripts/bench: summary -->\n")
    shown = cells(rest.partition("<!-- end -->")[0])
    figure = r"(?<!\S)-?\d[\d.,]*(?: \([^)]*\))?(?=,|$)"
    figures = [found for cell in shown for found in re.findall(figure, cell)]
    page = cells(measure.PAGE.read_text())
    assert len(figures) >= 9
    assert [figure for figure in figures if figure not in page] == []


def test_the_script_says_what_it_takes():
    done = subprocess.run([measure.ROOT / "scripts/bench", "--wrong"], capture_output=True, text=True)
    assert (done.returncode, done.stdout) == (2, "")
    for usage in ("scripts/bench ", "scripts/bench --write ", "scripts/bench --quick "):
        assert usage in done.stderr
