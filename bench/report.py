"""Tables of what was measured:

    report.py FILE...             prints the table of one run, or of the middle of several
    report.py --write FILE...     writes it into docs/measurements.md and its summary into README.md
"""

import json
import sys
import textwrap
from pathlib import Path

import figures
import goals
from sections import SECTIONS, SUMMARY

ROOT = Path(__file__).resolve().parents[1]
PAGE = ROOT / "docs/measurements.md"
README = ROOT / "README.md"
MARKS = ("<!-- scripts/bench writes this: -->\n", "<!-- until here -->\n")


def prose(text, indent=""):
    """A paragraph in lines of the length that documents have here."""
    return textwrap.fill(
        text, 108, subsequent_indent=indent, break_long_words=False, break_on_hyphens=False
    )


class Runs:
    """The results of several runs of the same kind."""

    def __init__(self, paths):
        self.all = [json.loads(Path(path).read_text()) for path in paths]
        self.first = self.all[0]

    def values(self, section, row, column):
        """The values of a figure, a list for each run; empty where it was not measured."""
        rows = [run["figures"][section].get(row, {}).get(column) for run in self.all]
        return [values for values in rows if values]

    def cell(self, section, row, column, digits):
        found = self.values(section, row, column)
        return figures.cell(found, digits) if found else "–"

    def middle(self, section, row, column):
        return figures.summary(self.values(section, row, column))[0]


def section_table(runs, section):
    rows = [
        [row, *(runs.cell(section.key, row, each.key, each.digits) for each in section.columns)]
        for row in runs.first["figures"][section.key]
    ]
    headings = [section.heading, *(each.heading for each in section.columns)]
    return f"## {section.title}\n\n{prose(section.text)}\n\n{figures.table(headings, rows)}"


def goals_table(runs):
    rows = []
    for goal in goals.goals(runs.first["figures"]):
        figure, limit = goal.figure(runs.middle), goal.limit(runs.middle)
        both = [f"{figures.number(each, goal.digits)} {goal.unit}".strip() for each in (figure, limit)]
        verdict = "met" if goals.is_met(goal, runs.middle) else "**missed**"
        rows.append([goal.text, *both, verdict])
    return figures.table(["goal", "measured", "limit", ""], rows)


def causes(runs):
    """The causes of the goals that are missed."""
    by_cause = {}
    for goal in goals.goals(runs.first["figures"]):
        if not goals.is_met(goal, runs.middle):
            by_cause.setdefault(goals.cause(goal) or "Not known.", []).append(goal.text)
    texts = [prose(f"- *{'; '.join(missed)}.* {cause}", "  ") for cause, missed in by_cause.items()]
    return "\n".join(texts) + "\n" if texts else "None is missed.\n"


def profile_tables(runs):
    parts = []
    for name, functions in runs.first["functions"].items():
        total = runs.middle("pass_through", name, "instructions")
        rows = [
            [f"`{function}`", figures.number(count), f"{100 * count / total:.0f} %"]
            for function, count in functions
        ]
        parts.append(f"`{name}`:\n\n" + figures.table(["function", "instructions", "share"], rows))
    return "\n".join(parts)


def calls_table(runs):
    calls = runs.first["calls"]
    names = list(next(iter(calls.values())))
    rows = [[row, *(figures.number(found[name], 1) for name in names)] for row, found in calls.items()]
    return figures.table(["a start with", *(f"`{name}`, ms" for name in names)], rows)


def machine(runs):
    rows = [[what, text] for what, text in runs.first["machine"].items()]
    loads = [f"{run['load'][0]:.1f} before, {run['load'][1]:.1f} after" for run in runs.all]
    return figures.table(["measured on", ""], [*rows, ["load (mean of a minute)", "; ".join(loads)]])


def spread_text(runs):
    if len(runs.all) == 1:
        return "A figure is the median of its rounds, with the quartiles."
    return (
        f"A figure is the middle one of {len(runs.all)} runs, of which each gives the median of its "
        "rounds, with the lowest and the highest run."
    )


def load_text(runs):
    """A warning when other programs kept the machine busy."""
    busy = any(run["load"][0] > 1 for run in runs.all)
    return "\n**The machine was busy with other programs: these times say little.**\n" if busy else ""


def page(runs):
    """The whole document."""
    head = prose(
        "What the launcher costs, side by side with what else could be used. `scripts/bench` takes all of "
        "it anew in about 3 minutes on Debian 12 or 13 and keeps each run in `build/bench`; `scripts/bench "
        f"--table FILE...` writes this page from several such runs. {spread_text(runs)}"
    )
    parts = ["# Measurements\n", head + "\n", machine(runs) + load_text(runs)]
    parts += [section_table(runs, section) for section in SECTIONS]
    parts.append("## Goals\n\n" + goals_table(runs))
    parts.append("The causes of what is missed:\n\n" + causes(runs))
    parts.append(
        "## Where the instructions of pass-through go\n\nBy callgrind, the functions with the most.\n\n"
        + profile_tables(runs)
    )
    parts.append(
        "## Where the time of starting processes goes\n\n"
        + prose(
            "By strace, which takes time itself: the sum of a start with its probe, of several starts the "
            "median. `vfork` lasts until the new process executes its program, so `close_range` and the "
            "launcher's `execve` are part of it."
        )
        + "\n\n"
        + calls_table(runs)
    )
    return "\n".join(parts)


def summary(runs):
    """The few figures that the README shows."""
    rows = []
    for text, unit, digits, launcher, others in SUMMARY:
        cells = [f"{name} {runs.cell(*where, digits)}" for name, where in others.items()]
        rows.append([text, f"{runs.cell(*launcher, digits)} {unit}".strip(), ", ".join(cells)])
    where = "{processor}; {system}".format(**runs.first["machine"])
    return f"{where}:\n\n" + figures.table(["", "launcher", "others"], rows)


def with_summary(text, table):
    """The README's text with another summary between the marks."""
    before, _, rest = text.partition(MARKS[0])
    _, end, after = rest.partition(MARKS[1])
    assert end, "the README has no place for the summary"
    return before + MARKS[0] + "\n" + table + "\n" + MARKS[1] + after


def main():
    paths = [each for each in sys.argv[1:] if each != "--write"]
    runs = Runs(paths)
    if paths == sys.argv[1:]:
        print(page(runs), end="")
        return
    PAGE.write_text(page(runs))
    README.write_text(with_summary(README.read_text(), summary(runs)))


if __name__ == "__main__":
    main()
