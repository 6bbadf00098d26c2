"""Numbers, their middle and their spread, and how they are written."""

import statistics


def middle(values):
    return statistics.median(values)


def quartiles(values):
    """The values below which a quarter and three quarters of the values lie."""
    if len(values) < 2:
        return values[0], values[0]
    low, _, high = statistics.quantiles(values, n=4, method="inclusive")
    return low, high


def summary(runs):
    """The figure of several runs, and from where to where it spreads.

    `runs` holds the values of each run. Of one run it is the median with the quartiles, of several
    the middle one of their medians, with the lowest and the highest.
    """
    if len(runs) == 1:
        return (middle(runs[0]), *quartiles(runs[0]))
    middles = [middle(values) for values in runs]
    return middle(middles), min(middles), max(middles)


def number(value, digits=0):
    """With so many decimal places, and commas between thousands."""
    text = f"{value:,.{digits}f}"
    return text.removeprefix("-") if float(text.replace(",", "")) == 0 else text


def cell(runs, digits=0):
    """A figure with its spread, where there is one."""
    value, low, high = (number(each, digits) for each in summary(runs))
    return value if low == high else f"{value} ({low} to {high})"


def table(headings, rows):
    """A Markdown table."""
    lines = [headings, ["---"] * len(headings), *rows]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)
