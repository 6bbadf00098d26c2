"""Medians, spreads, and how they are written."""

import figures
import pytest


def test_of_one_run_the_quartiles_are_given():
    assert figures.summary([[5, 1, 3, 2, 4]]) == (3, 2, 4)


def test_of_one_value_there_is_no_spread():
    assert figures.summary([[7]]) == (7, 7, 7)


def test_of_several_runs_the_middle_median_and_the_extremes_are_given():
    assert figures.summary([[1, 2, 90], [10, 10], [3, 4, 5]]) == (4, 2, 10)


@pytest.mark.parametrize(
    "value, digits, text",
    [
        (1234.56, 1, "1,234.6"),
        (1234567, 0, "1,234,567"),
        (0.04, 1, "0.0"),
        (-0.04, 1, "0.0"),
        (-2, 1, "-2.0"),
    ],
)
def test_a_number_has_its_decimal_places(value, digits, text):
    assert figures.number(value, digits) == text


def test_a_cell_has_a_spread_where_it_can_be_seen():
    assert figures.cell([[1.0, 2.0, 4.0]], 1) == "2.0 (1.5 to 3.0)"
    assert figures.cell([[1.01, 1.02, 1.03]], 1) == "1.0"


def test_a_table_has_a_line_under_its_headings():
    assert figures.table(["a", "b"], [["1", "2"]]) == "| a | b |\n| --- | --- |\n| 1 | 2 |\n"
