"""Dates that are moved."""

from __future__ import annotations

from datetime import date
from typing import Any

import numpy as np
import pandas as pd
import pytest

pytest.importorskip("pyarrow", reason="other columns are changed by way of Arrow")

import pyarrow as pa

import vantrel
from support.replacing import SECRET, customers
from vantrel.errors import ReplaceError
from vantrel.replacing.others.dates import likely_forms
from vantrel.replacing.others.shifted import days_of, shifted
from vantrel.replacing.replacer import Replacer


def moved(values: list[Any], days: int, kind: pa.DataType | None = None, form: str = "") -> Any:
    column = pa.array(values, kind)
    made, is_lost = shifted(column, "c", np.full(len(column), days), form)
    assert made.type == column.type
    return made.to_pylist(), np.flatnonzero(is_lost).tolist()


def test_every_number_of_days_but_none_is_as_frequent() -> None:
    digests = np.random.default_rng(1).integers(0, 2**64, (60_000, 8), dtype=np.uint64)
    days, counts = np.unique(days_of(digests, 3), return_counts=True)
    assert days.tolist() == [-3, -2, -1, 1, 2, 3]
    assert counts.min() > 9_500
    assert {*days_of(digests, 1).tolist()} == {-1, 1}
    assert abs(days_of(digests, 3650)).max() == 3650


@pytest.mark.parametrize(
    "kind",
    [pa.date32(), pa.date64(), *(pa.timestamp(unit) for unit in ("s", "ms", "us", "ns"))],
)
def test_types(kind: pa.DataType) -> None:
    values = pa.array(["2020-02-28", None, "1960-01-01"]).cast(pa.timestamp("s")).cast(kind)
    made, is_lost = shifted(values, "c", np.array([2, 5, -1]), "")
    assert made.type == kind
    wanted = pa.array(["2020-03-01", None, "1959-12-31"]).cast(pa.timestamp("s")).cast(kind)
    assert made.equals(wanted)
    assert not is_lost.any()


def test_the_time_of_day_stays_also_where_clocks_change() -> None:
    kind = pa.timestamp("us", "Europe/Berlin")
    noon = pd.Timestamp("2021-03-27 12:34:56.789", tz="Europe/Berlin")
    made, _ = moved([noon], 1, kind)
    assert made[0].isoformat() == "2021-03-28T12:34:56.789000+02:00"
    plain, _ = moved([pd.Timestamp("1960-05-01 23:59:59.999999")], -1)
    assert plain == [pd.Timestamp("1960-04-30 23:59:59.999999")]


@pytest.mark.parametrize(
    ("form", "text", "new"),
    [
        ("YYYY-MM-DD", "2020-02-28", "2020-03-01"),
        ("YYYY-MM-DD", "2020-02-28T10:00:00.5Z", "2020-03-01T10:00:00.5Z"),
        ("YYYY-MM-DD", "2020-02-28 10:00:00+02:00", "2020-03-01 10:00:00+02:00"),
        ("DD.MM.YYYY", "28.02.2020", "01.03.2020"),
        ("DD.MM.YYYY", "28.2.2020", "1.3.2020"),
        ("DD/MM/YYYY", "28/02/2020 9:05", "01/03/2020 9:05"),
        ("MM/DD/YYYY", "02/28/2020 9:05 PM", "03/01/2020 9:05 PM"),
        ("MM/DD/YYYY", "2/28/2020", "3/1/2020"),
        ("YYYY/MM/DD", "2020/02/28", "2020/03/01"),
        ("YYYYMMDD", "20200228", "20200301"),
        ("YYYY-MM-DD", "0998-02-27", "0998-03-01"),
    ],
)
def test_forms_of_texts(form: str, text: str, new: str) -> None:
    assert moved([text, None, "", "  "], 2, form=form) == ([new, None, "", "  "], [])
    coded = pa.array([text]).dictionary_encode()
    made, _ = shifted(coded, "c", np.array([2]), form)
    assert made.to_pylist() == [new]
    assert likely_forms(pa.array([text] * 3)) == [form]


def test_whole_numbers_that_are_dates() -> None:
    assert moved([20200228, None], 2, pa.int32(), "YYYYMMDD") == ([20200301, None], [])


def test_gaps_stay() -> None:
    gaps = [None, "", " ", "NULL", "n/a", "?"]
    assert moved(["2020-01-01", *gaps], 1) == (["2020-01-02", *gaps], [])


def test_what_is_no_date_does_not_stay() -> None:
    texts = ["2020-02-30", "2020-13-01", "unknown", "2020-01-01 to 2021-03-02", "0000-00-00"]
    assert moved(["2020-01-01", *texts], 1) == (["2020-01-02"] + [None] * 5, [1, 2, 3, 4, 5])
    assert moved(["01.02.2020"], 1, form="DD/MM/YYYY") == ([None], [0])


@pytest.mark.parametrize("days", [-2, 2])
def test_what_would_leave_the_calendar_does_not_stay(days: int) -> None:
    end = date(9999, 12, 31) if days > 0 else date(1, 1, 1)
    assert moved([end], days) == ([None], [0])
    assert moved([end], -days)[1] == []
    assert moved([end.isoformat()], days) == ([None], [0])
    last = pd.Timestamp.max if days > 0 else pd.Timestamp.min
    assert moved([last], days, pa.timestamp("ns")) == ([None], [0])


def test_other_types_are_refused() -> None:
    with pytest.raises(ReplaceError) as caught:
        moved([1.5], 1)
    assert str(caught.value) == (
        "Column 'c' is of type double, which holds no dates: 'blank' empties it."
    )


def with_dates(people: int = 50) -> pd.DataFrame:
    table = customers(people)
    born = pd.Timestamp("1980-01-15") + pd.to_timedelta(np.arange(people) * 37, "D")
    table["born"] = born
    table["joined"] = (born + pd.to_timedelta(9_000, "D")).strftime("%d.%m.%Y")
    return table


def test_all_dates_of_a_person_move_alike() -> None:
    table = with_dates()
    others = {"born": "shift:180", "joined": "shift:180"}
    made = vantrel.replace(table, "customer_id", SECRET, others=others)
    days = (made["born"] - table["born"]).dt.days
    joined = [pd.to_datetime(each["joined"], format="%d.%m.%Y") for each in (made, table)]
    assert (joined[0] - joined[1]).dt.days.equals(days)
    assert days.abs().between(1, 180).all()
    assert days.nunique() > 30
    other = vantrel.replace(table, "customer_id", SECRET[1:], others=others)
    assert not (other["born"] - table["born"]).dt.days.equals(days)
    again = Replacer(SECRET).replace(table[::-1].head(7), "customer_id", others=others)
    pd.testing.assert_series_equal(again["born"], made["born"][::-1].head(7))


def test_dates_that_do_not_tell_their_form() -> None:
    table = with_dates(20).assign(d="03/04/2020", e="soon")
    with pytest.raises(ReplaceError) as caught:
        vantrel.replace(table, "customer_id", SECRET, others={"d": "shift:9"})
    assert str(caught.value) == (
        "Column 'd' does not tell whether days or months come first: write 'shift:9:DD/MM/YYYY' or"
        " 'shift:9:MM/DD/YYYY'."
    )
    with pytest.raises(ReplaceError) as caught:
        vantrel.replace(table, "customer_id", SECRET, others={"e": "shift:9"})
    assert str(caught.value) == (
        "Column 'e' has no dates of a form that can be moved: 'YYYY-MM-DD', 'DD.MM.YYYY',"
        " 'DD/MM/YYYY', 'MM/DD/YYYY', 'YYYY/MM/DD', 'YYYYMMDD'. 'blank' empties it."
    )
    given = vantrel.replace(table, "customer_id", SECRET, others={"d": "shift:9:MM/DD/YYYY"})
    assert given["d"].str.fullmatch(r"03/\d\d/2020|02/2\d/2020").all()


def test_what_was_no_date_is_told() -> None:
    table = with_dates(20)
    table.loc[[3, 7], "joined"] = ["never", "31.02.2020"]
    replacer = Replacer(SECRET)
    made = replacer.replace(table, "customer_id", others={"joined": "shift:9"})
    assert made["joined"].isna().to_numpy().nonzero()[0].tolist() == [3, 7]
    assert replacer.notes[-1] == (
        "Column 'joined': 2 cells without a date of the form DD.MM.YYYY that could be moved, now"
        " empty (rows 4, 8)."
    )
