"""Medians, quartiles, how they are written, and where."""

import pytest
import tables


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
    assert tables.number(value, digits) == text


@pytest.mark.parametrize(
    "values, text",
    [
        ([1.0, 9.0, 2.0, 4.0, 5.0], "4.0 (2.0 to 5.0)"),
        ([1.01, 1.02, 1.03], "1.0"),
        ([7], "7.0"),
        ([], "–"),
    ],
)
def test_a_cell_has_the_median_and_the_quartiles_where_they_differ(values, text):
    assert tables.cell(values, 1) == text


def test_a_section_has_a_row_for_each_name_and_a_dash_for_what_was_not_measured():
    columns = ("program", {"time": ("time, ms", 1), "size": ("size, KiB", 0)})
    made = tables.section_table(columns, {"a": {"size": [2], "time": [1]}, "b": {"time": [3]}})
    assert made == (
        "| program | time, ms | size, KiB |\n"
        "| --- | --- | --- |\n"
        "| a | 1.0 | 2 |\n"
        "| b | 3.0 | – |\n"
    )


PAGE = """before
<!-- scripts/bench: a -->

former

<!-- end -->
between
<!-- scripts/bench: b -->

other

<!-- end -->
after
"""


def test_a_new_table_takes_the_place_of_the_old_one_and_of_nothing_else():
    assert tables.replaced(PAGE, "a", "\\1 new\n") == PAGE.replace("former", "\\1 new")


@pytest.mark.parametrize("text", ["", PAGE + PAGE])
def test_a_page_has_one_place_for_a_table(text):
    with pytest.raises(AssertionError, match="places for the table"):
        tables.replaced(text, "a", "new\n")
