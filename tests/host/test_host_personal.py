"""Finding personal columns in tables of all shapes and types."""

from __future__ import annotations

import datetime
import random
from decimal import Decimal

import numpy as np
import pandas as pd
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

from support.examples import EXAMPLES
from vantrel.detection import detect_columns
from vantrel.detection.personal import Finding, Kind, find_personal
from vantrel.tables import read_table

CARDS = [
    4111111111111111, 4012888888881881, 5555555555554444, 5105105105105100, 4222222222222220,
    2223003122003222, 6011111111111117, 3530111333300000,
]  # fmt: skip
BIRTHS = pd.date_range("1940-01-05", "2010-01-01", freq="501D")


def kinds(df: pd.DataFrame) -> dict[str, Kind]:
    return {finding.column: finding.kind for finding in find_personal(df)}


@pytest.mark.parametrize(
    ("table", "columns"),
    [
        ("customers", {"notes": Kind.PROSE}),
        ("orders", {}),
        ("passengers", {}),
        ("respondents", {}),
    ],
)
def test_the_examples(table: str, columns: dict[str, Kind]) -> None:
    df = read_table(EXAMPLES / f"{table}.csv")
    found = find_personal(df, decided=detect_columns(df).values())
    assert {finding.column: finding.kind for finding in found} == columns


def test_findings_come_in_the_order_of_the_table() -> None:
    df = pd.DataFrame({"zip": ["10117"], "x": ["y"], "dob": ["1980-01-01"], "city": ["Bonn"]})
    assert list(kinds(df)) == ["zip", "dob", "city"]


def test_what_was_decided_is_not_found() -> None:
    df = pd.DataFrame({"zip": ["10117"], "dob": ["1980-01-01"]})
    assert find_personal(df, decided=["dob"]) == (
        Finding("zip", Kind.POSTCODE, "its name says so"),
    )


@pytest.mark.parametrize("rows", [0, 1])
def test_tables_of_hardly_anything(rows: int) -> None:
    assert find_personal(pd.DataFrame()) == ()
    df = pd.DataFrame({"dob": ["1980-01-01"][:rows], "x": ["10.200.0.1"][:rows]})
    assert kinds(df) == ({"dob": Kind.BIRTH} if rows else {})


@pytest.mark.parametrize("nothing", [None, np.nan, pd.NA, pd.NaT, "", "  "])
def test_a_column_without_any_value_is_not_found(nothing: object) -> None:
    assert kinds(pd.DataFrame({"dob": pd.Series([nothing] * 9, dtype=object)})) == {}


def test_missing_values_are_no_values() -> None:
    df = pd.DataFrame({"x": [None, *map(str, CARDS), None, np.nan, ""] * 2})
    assert kinds(df) == {"x": Kind.CARD}


@pytest.mark.parametrize(
    "column",
    [
        pd.Series(CARDS),
        pd.Series([*CARDS, None], dtype="float64"),
        pd.Series([*CARDS, None], dtype="Int64"),
        pd.Series(CARDS).astype(str),
        pd.Series(CARDS).astype(str).astype("category"),
        pd.Series(CARDS * 3).astype("category"),
        pd.Series([Decimal(card) for card in CARDS]),
        pd.Series([*CARDS[:4], *map(str, CARDS[4:]), float(CARDS[0])], dtype=object),
    ],
)
def test_numbers_of_all_types(column: pd.Series) -> None:
    assert kinds(pd.DataFrame({"x": column})) == {"x": Kind.CARD}


@pytest.mark.parametrize(
    "column",
    [
        pd.Series(BIRTHS),
        pd.Series(BIRTHS).dt.tz_localize("UTC"),
        pd.Series(BIRTHS).dt.date,
        pd.Series(BIRTHS).astype(str).astype("category"),
        pd.Series([*BIRTHS, pd.NaT]),
        pd.Series(BIRTHS.strftime("%Y%m%d").astype(int)),
        pd.Series([datetime.datetime(day.year, day.month, day.day) for day in BIRTHS]),  # noqa: DTZ001 - as tables hold them
    ],
)
def test_days_of_all_types(column: pd.Series) -> None:
    assert kinds(pd.DataFrame({"x": column})) == {"x": Kind.BIRTH}


def test_positions_as_numbers_are_told_by_their_names() -> None:
    df = pd.DataFrame({"lat": [52.5163, 48.8584], "lon": [13.3777, 2.2945], "x": [52.5163, 1.1]})
    assert kinds(df) == {"lat": Kind.POSITION, "lon": Kind.POSITION}


def test_values_that_are_no_texts_are_no_reason_to_fail() -> None:
    df = pd.DataFrame(
        {
            "dob": [True, False],
            "ip": [["10.0.0.1"], {"ip": "10.0.0.1"}],
            "iban": [b"DE89370400440532013000", b""],
            "zip": [float("inf"), float("-inf")],
            "lat": [1 + 2j, object()],
        }
    )
    assert kinds(df) == {}


def test_columns_whose_names_are_no_text_or_not_unique_are_left_out() -> None:
    df = pd.DataFrame([["1980-01-01"] * 4], columns=[7, "dob", "dob", "birthday"])
    assert kinds(df) == {"birthday": Kind.BIRTH}


def test_only_the_first_ten_thousand_values_are_looked_at() -> None:
    later = list(map(str, CARDS)) * 5_000
    assert kinds(pd.DataFrame({"x": ["none"] * 9_999 + later})) == {}
    assert kinds(pd.DataFrame({"x": ["none"] * 9_990 + later})) == {"x": Kind.CARD}


@pytest.mark.parametrize(("words", "found"), [(190, {"notes": Kind.PROSE}), (200, {})])
def test_of_a_text_the_first_thousand_characters_are_looked_at(
    words: int, found: dict[str, Kind]
) -> None:
    letters = "ABCDEFGHIJ"
    df = pd.DataFrame({"notes": [f"{'word ' * words}Herr {each}unz" for each in letters]})
    assert kinds(df) == found


def test_the_same_table_gives_the_same_findings_whatever_was_drawn_before() -> None:
    df = pd.DataFrame({"x": [f"10.1.{row // 256}.{row % 256}" for row in range(9_000)]})
    df.loc[::9, "x"] = [f"unknown {row}" for row in range(1_000)]
    df.loc[:, "x"] = df["x"].str.replace("10.1", "10.200")
    random.seed(1)
    before = find_personal(df)
    random.seed(2)
    assert before == find_personal(df)
    assert [finding.kind for finding in before] == [Kind.IP]


def test_the_table_is_left_as_it_is() -> None:
    df = pd.DataFrame({"x": CARDS, "dob": BIRTHS[: len(CARDS)]})
    before = df.copy(deep=True)
    find_personal(df)
    pd.testing.assert_frame_equal(df, before)


_LIKELY = st.sampled_from(
    [
        "dob", "zip", "iban", "ssn", "ip", "lat", "linkedin", "1980-02-30", "0000-00-00", "19800230",
        "10.0.0.1", "::", "52.1234, 13.1234", "POINT(1 2)", "Herr Kunz wartet", "Rua 7", "٣٤٥",
        "²", "1/2/1980", "\N{FULLWIDTH DIGIT ONE}2345678901", "AB123456C", "x.com/ann", "-", "É",
    ]
)  # fmt: skip


@st.composite
def _frames(draw: st.DrawFn) -> pd.DataFrame:
    names = draw(st.lists(st.one_of(_LIKELY, st.text(max_size=9)), max_size=4))
    rows = draw(st.integers(0, 12))
    words = st.one_of(
        st.none(), _LIKELY, st.text(max_size=20), st.text("0123456789-./ ", max_size=19)
    )
    cells = st.lists(st.one_of(words, st.integers(), st.floats()), min_size=rows, max_size=rows)
    columns = [pd.Series(draw(cells), dtype=object) for _ in names]
    df = pd.concat(columns, axis="columns") if columns else pd.DataFrame(index=range(rows))
    df.columns = pd.Index(names, dtype=object)
    return df


@settings(max_examples=300)
@given(_frames())
def test_any_table_gives_each_column_at_most_one_finding(df: pd.DataFrame) -> None:
    found = find_personal(df)
    columns = [finding.column for finding in found]
    assert columns == [column for column in df.columns if column in columns]
    assert all(df[column].notna().any() for column in columns)
    assert find_personal(df.copy(), decided=columns) == ()
