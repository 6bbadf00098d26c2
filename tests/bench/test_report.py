"""The tables that are made of runs."""

import json
import subprocess

import goals
import pytest
import report
from sections import ICON, MENU, SECTIONS, SUMMARY

ROWS = {
    "pass_through": ("bare", "launcher align", "tini", "dumb-init", "sh -c"),
    "start": ("at once", "after 50 ms"),
    "restart": ("a component's death",),
    "stop": ("three willing components",),
    "idle": ("launcher in a terminal", "launcher in the menu bar", "supervisord", "ruby-foreman", "s6-svscan"),
    "menu": (ICON, MENU),
    "scale": ("as usual", "1,000 open descriptors", "something unheard of"),
    "size": ("launcher",),
}


def a_run(value):
    figures = {
        section.key: {
            row: {column.key: [value] for column in section.columns} for row in ROWS[section.key]
        }
        for section in SECTIONS
    }
    return {
        "machine": {"processor": "a slow one", "system": "an old one"},
        "load": [0.1, 0.2],
        "figures": figures,
        "functions": {"tini": [["do_lookup_x", 1]]},
        "calls": {"as usual": {"vfork": 1.23, "execve": 4}},
    }


@pytest.fixture
def runs(tmp_path):
    """Makes runs of the results that it is given."""

    def make(*results):
        paths = [tmp_path / f"{number}.json" for number in range(len(results))]
        for path, result in zip(paths, results):
            path.write_text(json.dumps(result))
        return report.Runs(paths)

    return make


def cells(text):
    """The rows of all tables, by their first cell."""
    rows = [line.strip("| ").split(" | ") for line in text.splitlines() if line.startswith("| ")]
    return {row[0]: row[1:] for row in rows}


def test_each_row_of_each_table_has_its_numbers(runs):
    made = runs(a_run(3))
    for section in SECTIONS:
        found = cells(report.section_table(made, section))
        for row in ROWS[section.key]:
            assert len(found[row]) == len(section.columns)
            assert all(float(cell) == 3 for cell in found[row]), row


def test_of_three_runs_the_middle_one_is_given_with_the_spread(runs):
    found = cells(report.page(runs(a_run(30), a_run(10), a_run(20))))
    assert found["launcher in a terminal"][0] == "20 (10 to 30)"


def test_what_was_not_measured_is_no_number(runs):
    result = a_run(1)
    del result["figures"]["pass_through"]["sh -c"]["instructions"]
    table = report.section_table(runs(result), SECTIONS[0])
    assert cells(table)["sh -c"] == ["1", "1.00", "1", "–"]


def test_a_missed_goal_has_its_cause(runs):
    result = a_run(1)
    result["figures"]["pass_through"]["tini"]["instructions"] = [0.5]
    made = runs(result)
    verdicts = cells(report.goals_table(made))
    assert verdicts["pass-through: fewer instructions than tini"][-1] == "**missed**"
    assert verdicts["start, at once: beyond the waits and probes"][-1] == "met"
    assert goals.CAUSES["pass_through instructions"] in " ".join(report.causes(made).split())


def test_equal_costs_are_not_less(runs):
    verdicts = cells(report.goals_table(runs(a_run(1))))
    assert verdicts["pass-through: less time than tini"][-1] == "**missed**"


@pytest.mark.parametrize("row", ["1,000 open descriptors", "an environment of 1.9 MB"])
def test_a_start_with_more_to_do_has_a_cause(row):
    figures = {**dict.fromkeys(("start", "restart", "stop"), {}), "scale": {"as usual": {}, row: {}}}
    assert goals.cause(goals.goals(figures)[-1])


def test_a_cause_that_nobody_knows_is_not_made_up(runs):
    causes = " ".join(report.causes(runs(a_run(6))).split())
    assert "something unheard of: more time.* Not known." in causes


def test_the_page_shows_machine_and_profiles(runs):
    text = report.page(runs(a_run(2)))
    assert "a slow one" in text
    assert "| `do_lookup_x` | 1 | 50 % |" in text
    assert "| a start with | `vfork`, ms | `execve`, ms |" in text and "| as usual | 1.2 | 4.0 |" in text


@pytest.mark.parametrize("load, warned", [(0.9, False), (1.1, True)])
def test_a_busy_machine_is_told(runs, load, warned):
    made = runs(a_run(2), {**a_run(2), "load": [load, 0.2]})
    assert ("The machine was busy" in report.page(made)) == warned


def test_the_summary_takes_the_place_of_the_old_one(runs):
    table = report.summary(runs(a_run(2)))
    old = f"before\n{report.MARKS[0]}former\n{report.MARKS[1]}after\n"
    new = report.with_summary(old, table)
    assert "former" not in new and table in new
    assert new.startswith("before\n") and new.endswith("after\n")
    assert report.with_summary(new, table) == new


def figure_of_page(page, key, row, column):
    section = next(each for each in SECTIONS if each.key == key)
    _, _, part = page.partition(f"\n## {section.title}\n")
    return cells(part.partition("\n## ")[0])[row][[each.key for each in section.columns].index(column)]


def test_the_readme_shows_what_the_page_has():
    """The README's table was written together with the page."""
    _, _, rest = report.README.read_text().partition(report.MARKS[0])
    found = cells(rest.partition(report.MARKS[1])[0])
    page = report.PAGE.read_text()
    for text, unit, _, launcher, others in SUMMARY:
        assert found[text][0] == f"{figure_of_page(page, *launcher)} {unit}".strip()
        wanted = [f"{name} {figure_of_page(page, *where)}" for name, where in others.items()]
        assert found[text][1:] == ([", ".join(wanted)] if wanted else [])


def test_the_script_says_what_it_takes():
    done = subprocess.run([report.ROOT / "scripts/bench", "--wrong"], capture_output=True, text=True)
    assert (done.returncode, done.stdout) == (2, "")
    for usage in ("scripts/bench ", "scripts/bench --quick ", "scripts/bench --table FILE..."):
        assert usage in done.stderr
