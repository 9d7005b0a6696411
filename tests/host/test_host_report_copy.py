"""What the report says of a copy in which people were replaced."""

import json
from pathlib import Path
from typing import Any

import numpy as np
import pandas as pd
import pytest
from msgspec.structs import replace

import vantrel
from vantrel.errors import CompareError, RecordError
from vantrel.reporting.copies.cells import ReplacedColumn
from vantrel.reporting.copies.comparison import CopyComparison, compare_copy
from vantrel.reporting.copies.record import CopyRecord, FoundLeak, read_copy_record
from vantrel.reporting.nearness.shared import most_by_chance
from vantrel.reporting.verdict import FINE, LOOK, Verdict
from vantrel.sampling.record import record_path

CUSTOMERS, ROWS = 150, 400
REPLACED = {
    "firstname": "firstname",
    "lastname": "lastname",
    "fullname": "fullname",
    "email": "email",
    "mobile_number": "mobile_number",
}


def orders(seed: int) -> pd.DataFrame:
    """Orders of customers, several of one; customers differ by the seed, all else does not."""
    people = vantrel.people(CUSTOMERS, countries=["GB"], seed=seed)[list(REPLACED)]
    numbers = np.random.default_rng(seed).integers(10**9, 10**10, CUSTOMERS)
    people["mobile_number"] = [f"0{number}" for number in numbers]
    whose = np.random.default_rng(0).integers(0, CUSTOMERS, ROWS)
    made = people.iloc[whose].reset_index(drop=True)
    made.insert(0, "customer", whose.astype(str))
    return made.assign(total=[str(number) for number in range(ROWS)], note="paid")


ORIGINAL, COPY = orders(1), orders(2)
RECORD = CopyRecord(
    format="vantrel-replace",
    schema_version=1,
    table="orders.csv",
    rows=ROWS,
    key=["customer"],
    replaced=REPLACED,
    others={},
    options={"scrub": []},
    leaks=[],
    versions={"vantrel": "0.1.0"},
)


def compared(copy: pd.DataFrame, **changes: Any) -> CopyComparison:
    return compare_copy(ORIGINAL, copy, replace(RECORD, **changes))


def judged(copy: pd.DataFrame, **changes: Any) -> dict[str, Verdict]:
    return {each.about: each for each in compared(copy, **changes).verdicts}


def looks(copy: pd.DataFrame, **changes: Any) -> set[str]:
    found = judged(copy, **changes)
    return {about for about, each in found.items() if each.state == LOOK}


def with_cell(row: int, column: str, value: str | None) -> pd.DataFrame:
    copy = COPY.copy()
    copy.loc[row, column] = value
    return copy


def test_a_good_copy_is_as_expected() -> None:
    assert {each.state for each in judged(COPY).values()} == {FINE}
    assert judged(COPY)["One person for each key"].words == (
        "Rows of one key have one made-up person, and no two keys share an e-mail address or user"
        " name."
    )
    assert not compared(COPY).asks_for_look
    assert compared(COPY).summary == "Compared 400 rows with 400 rows of a copy"


@pytest.mark.parametrize(("column", "value"), [("total", "x"), ("note", None), ("customer", "x")])
def test_what_had_to_stay_and_did_not_asks_for_a_look(column: str, value: str | None) -> None:
    found = judged(with_cell(7, column, value))["Cells that had to stay"]
    assert found == Verdict(
        "Cells that had to stay",
        "1 differ",
        LOOK,
        f"Cells differ from the original in {column}. Make the copy anew.",
        "kept",
    )


def test_rows_in_another_order_did_not_stay() -> None:
    assert "Cells that had to stay" in looks(COPY.iloc[::-1])


def test_columns_that_were_scrubbed_or_acted_on_need_not_stay() -> None:
    changed = COPY.assign(note="-", total=None)
    assert looks(changed) == {"Cells that had to stay"}
    assert looks(changed, options={"scrub": ["note"]}, others={"total": "blank"}) == set()
    kept = looks(changed, options={"scrub": ["note"]}, others={"total": "keep"})
    assert kept == {"Cells that had to stay"}


@pytest.mark.parametrize("column", REPLACED)
def test_a_real_column_that_was_not_replaced_asks_for_a_look(column: str) -> None:
    copy = COPY.assign(**{column: ORIGINAL[column]})
    found = judged(copy)["Cells that had to change"]
    assert (found.figure, found.state) == ("400 as before", LOOK)
    assert found.words == (
        f"Real values are still in {column}. Make the copy anew, and do not hand this one on."
    )


def with_phones(seed: int, numbers: int) -> pd.DataFrame:
    """People of twenty countries, each of which has so many telephone numbers."""
    drawn = np.random.default_rng(seed).integers(0, numbers, ROWS)
    land = np.arange(ROWS) % 20
    phone = [f"+{place}{number:06}" for place, number in zip(10 + land, drawn, strict=True)]
    return pd.DataFrame({"land": land.astype(str), "phone": phone})


def phones(original: pd.DataFrame, copy: pd.DataFrame) -> ReplacedColumn:
    own = {"key": [], "replaced": {"phone": "mobile_number"}, "columns": {"country": ["land"]}}
    (found,) = compare_copy(original, copy, replace(RECORD, **own)).figures.replaced
    return found


def test_few_numbers_of_each_country_come_back_by_chance() -> None:
    found = phones(with_phones(1, 20), with_phones(2, 20))
    assert found.chance == pytest.approx(ROWS / 20, rel=0.2)
    assert found.same > most_by_chance(ROWS / 20 / 20)
    assert found.is_replaced


@pytest.mark.parametrize("rows", [1, 20, ROWS])
def test_countries_of_few_people_do_not_explain_what_was_not_replaced(rows: int) -> None:
    original = with_phones(1, 10**6).head(rows)
    assert not phones(original, original).is_replaced


def test_a_real_column_in_another_spelling_was_not_replaced() -> None:
    respelt = ORIGINAL["lastname"].str.upper() + ", Dr. " + ORIGINAL["firstname"]
    assert {"Cells that had to change", "Real full names in the copy"} <= looks(
        COPY.assign(fullname=respelt)
    )


def test_the_people_of_a_copy_in_another_order_are_still_real() -> None:
    turned = COPY.assign(**{each: ORIGINAL[each].to_numpy()[::-1] for each in REPLACED})
    assert {"Real full names in the copy", "Real e-mail addresses in the copy"} <= looks(turned)


def test_one_key_that_became_several_people_asks_for_a_look() -> None:
    found = judged(with_cell(7, "lastname", "Somebody"))["One person for each key"]
    assert (found.figure, found.state) == ("1 exception", LOOK)
    assert found.words == "One key has several made-up values in lastname."
    written = with_cell(7, "lastname", f" {COPY['lastname'].str.upper()[7]}")
    assert looks(written) == set()


def test_keys_that_share_an_account_ask_for_a_look() -> None:
    address = {"9": "a@b.example", "10": "a@b.example"}
    copy = COPY.assign(email=COPY["email"].where(~COPY["customer"].isin(address), "a@b.example"))
    found = judged(copy)["One person for each key"]
    assert (found.state, found.words) == (LOOK, "Several keys share one in email.")


def test_rows_without_a_key_are_nobodys() -> None:
    record = replace(RECORD, key=["customer", "note"])
    original = ORIGINAL.assign(note=None)
    comparison = compare_copy(original, with_cell(7, "lastname", "X").assign(note=None), record)
    assert {each.torn for each in comparison.figures.replaced} == {0}
    assert "One person for each key" not in judged(COPY, key=[])


def test_what_the_search_found_is_told() -> None:
    found = judged(COPY, leaks=[FoundLeak("note", "person", 3), FoundLeak("note", "name", 2)])
    assert found["People who are still named"] == Verdict(
        "People who are still named",
        "5 cells",
        LOOK,
        "Cells of note named people when the copy was made: read them, or make the copy anew and"
        " scrub these columns.",
        "leaks",
    )


def test_a_copy_with_other_rows_is_not_compared_row_by_row() -> None:
    comparison = compared(COPY.head(399))
    assert comparison.verdicts[0] == Verdict(
        "Rows",
        "399",
        LOOK,
        "The original has 400 rows, the copy 399, and 400 were made: one of them was changed since."
        " Make the copy anew.",
        "kept",
    )
    assert (comparison.figures.kept, comparison.figures.replaced) == ((), ())
    assert "Nothing to compare row by row." in comparison.to_html()


def test_a_record_of_another_table_is_refused() -> None:
    with pytest.raises(CompareError) as caught:
        compare_copy(ORIGINAL, COPY.drop(columns="email"), RECORD)
    assert str(caught.value).startswith(
        "The record beside the copy tells of columns that the copy has not: 'email'. It belongs to"
        " another table. The columns of the copy are: 'customer', 'firstname',"
    )
    with pytest.raises(CompareError) as caught:
        compare_copy(ORIGINAL, COPY.drop(columns="note"), RECORD)
    assert str(caught.value) == (
        "The copy has not all columns of the original, without: 'note'. It is a copy of another"
        " table, or was changed."
    )


def test_the_page_and_the_figures_tell_all() -> None:
    comparison = compared(with_cell(7, "total", "<b>"), leaks=[FoundLeak("<i>", "person", 3)])
    page = comparison.to_html("orders.csv", "copy.csv")
    for told in ("orders.csv", "copy.csv", "&lt;i&gt;", "What had to stay", "What had to change"):
        assert told in page
    assert "<i>" not in page.replace("<i class", "")
    form = json.loads(comparison.to_json("orders.csv", "copy.csv"))
    assert (form["compared"], form["asks_for_look"]) == ("copy", True)
    assert form["figures"]["kept"][1] == {"column": "total", "differing": 1}


def test_a_record_is_read_as_it_was_written(tmp_path: Path) -> None:
    import msgspec

    copy = tmp_path / "copy.csv"
    assert read_copy_record(copy) is None
    path = record_path(copy)
    path.write_bytes(msgspec.json.encode(RECORD))
    assert read_copy_record(copy) == RECORD
    path.write_text('{"format": "vantrel-sample"}')
    assert read_copy_record(copy) is None
    path.write_text('{"format": "vantrel-replace", "schema_version": 2}')
    with pytest.raises(RecordError) as caught:
        read_copy_record(copy)
    assert str(caught.value) == (
        f"{path} cannot be used: its schema version is 2, the newest known here is 1: install a"
        " newer vantrel."
    )
