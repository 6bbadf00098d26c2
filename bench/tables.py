"""Formats figures and tables, and puts tables into the pages."""

import re
import statistics


def number(value, digits):
    """With `digits` decimal places, and commas between thousands."""
    text = f"{value:,.{digits}f}"
    return text.removeprefix("-") if float(text.replace(",", "")) == 0 else text


def cell(values, digits):
    """The median, with the quartiles where they differ; a dash for no values."""
    if not values:
        return "–"
    shown = number(statistics.median(values), digits)
    if len(values) == 1:
        return shown
    low, _, high = statistics.quantiles(values, n=4, method="inclusive")
    low, high = number(low, digits), number(high, digits)
    return shown if low == high else f"{shown} ({low} to {high})"


def table(headings, rows):
    """A Markdown table."""
    lines = [headings, ["---"] * len(headings), *rows]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)


def section_table(columns, rows):
    """`columns`: the first heading, then for each key its heading and decimal places.
    `rows`: for each name its values by key.
    """
    first, keys = columns
    cells = [
        [name, *(cell(row.get(key, []), digits) for key, (_, digits) in keys.items())]
        for name, row in rows.items()
    ]
    return table([first, *(heading for heading, _ in keys.values())], cells)


def replaced(text, name, new):
    """A page's text with a new table between the marks of that name."""
    marks = rf"(<!-- scripts/bench: {name} -->\n\n).*?(\n<!-- end -->\n)"
    text, count = re.subn(marks, lambda found: found[1] + new + found[2], text, flags=re.DOTALL)
    assert count == 1, f"the page has {count} places for the table {name!r}"
    return text
