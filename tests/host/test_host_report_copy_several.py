"""What the report says of a copy each row of which has several people."""

from dataclasses import replace

import numpy as np
import pandas as pd
import pytest

import vantrel
from vantrel.reporting.copies.comparison import CopyComparison, compare_copy
from vantrel.reporting.copies.record import CopyRecord, OfPerson
from vantrel.reporting.verdict import FINE, LOOK

ROWS = 300
PARTS = ("firstname", "lastname", "email")


def deliveries(seed: int) -> pd.DataFrame:
    """Who buys for whom, a thing each; people differ by the seed, all else does not."""
    table = pd.DataFrame({"total": [str(number) for number in range(ROWS)]})
    for place, who in enumerate(("buyer", "recipient")):
        people = vantrel.people(100, countries=["GB"], seed=2 * seed + place)
        whose = np.random.default_rng(place).integers(0, len(people), ROWS)
        own = people.iloc[whose].reset_index(drop=True)
        table[f"{who}_id"] = whose.astype(str)
        table = table.assign(**{f"{who}_{part}": own[part] for part in PARTS})
    return table


ORIGINAL, COPY = deliveries(1), deliveries(2)
PEOPLE = {
    who: OfPerson(
        key=[f"{who}_id"],
        replaced={f"{who}_{part}": part for part in PARTS},
        columns={part: [f"{who}_{part}"] for part in PARTS},
    )
    for who in ("buyer", "recipient")
}
RECORD = CopyRecord(
    format="vantrel-replace",
    schema_version=1,
    table="deliveries.csv",
    rows=ROWS,
    people_of_a_row=PEOPLE,
    others={},
    options={},
    leaks=[],
    versions={},
)


def compared(copy: pd.DataFrame) -> CopyComparison:
    return compare_copy(ORIGINAL, copy, RECORD)


def looks(copy: pd.DataFrame) -> set[str]:
    return {each.about for each in compared(copy).verdicts if each.state == LOOK}


def test_a_good_copy_is_as_expected() -> None:
    assert {each.state for each in compared(COPY).verdicts} == {FINE}


def test_chance_makes_all_rows_of_a_person_real_at_once() -> None:
    everybody_thrice = compared(COPY).figures
    assert {each.rows_of_one > 3 for each in everybody_thrice.replaced} == {True}
    (names,) = everybody_thrice.nearness.names
    assert names.limit > replace(names, rows_of_one=1.0).limit


def of(who: str, table: pd.DataFrame) -> dict[str, np.ndarray]:
    """The columns of somebody, in another order."""
    return {part: table[f"{who}_{part}"].to_numpy()[::-1] for part in PARTS}


@pytest.mark.parametrize("who", PEOPLE)
@pytest.mark.parametrize("real", PEOPLE)
def test_real_people_are_found_wherever_they_are_in_a_row(who: str, real: str) -> None:
    copy = COPY.assign(**{f"{who}_{part}": each for part, each in of(real, ORIGINAL).items()})
    assert {
        "Real full names in the copy",
        "Real e-mail addresses in the copy",
        "Whole real rows in the copy",
    } <= looks(copy)


def test_the_row_of_a_real_person_is_named() -> None:
    real = ORIGINAL["buyer_email"][20]
    mails = COPY["recipient_email"]
    copy = COPY.assign(recipient_email=mails.where(mails.index != 7, real))
    shared = {each.kind: each for each in compared(copy).figures.nearness.parts}["E-mail address"]
    (example,) = shared.examples
    assert (example.value, example.rows, example.first_row) == (real, 1, 8)
    assert (shared.sampled_rows, shared.bearing) == (2 * ROWS, 1)


def test_the_page_tells_the_keys_of_all() -> None:
    page = compared(COPY).to_html()
    assert "buyer_id" in page
    assert "recipient_id" in page.partition("How the copy was made")[2]


def test_several_columns_of_one_attribute_are_all_looked_at() -> None:
    numbers = np.random.default_rng(0).integers(10**9, 10**10, (4, ROWS)).astype(str)
    columns = ["mobile", "mobile_2"]
    original = pd.DataFrame(dict(zip(columns, numbers[:2], strict=True)))
    copy = pd.DataFrame(dict(zip(columns, numbers[2:], strict=True)))
    record = CopyRecord(
        format="vantrel-replace",
        schema_version=1,
        table="numbers.csv",
        rows=ROWS,
        key=[],
        replaced=dict.fromkeys(columns, "mobile_number"),
        columns={"mobile_number": columns},
        others={},
        options={},
        leaks=[],
        versions={},
    )
    assert {each.state for each in compare_copy(original, copy, record).verdicts} == {FINE}
    for column in columns:
        real = copy.assign(**{column: original["mobile"].to_numpy()[::-1]})
        found = {each.about: each.state for each in compare_copy(original, real, record).verdicts}
        assert found["Real telephone numbers in the copy"] == LOOK
