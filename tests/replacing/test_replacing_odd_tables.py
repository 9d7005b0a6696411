"""Whatever table comes: gaps and all other columns stay, and the order of rows has no say."""

from __future__ import annotations

from typing import Any

import pandas as pd
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

pytest.importorskip("pyarrow", reason="People are replaced by way of Arrow")

import vantrel
from support.replacing import SECRET
from vantrel.replacing.runs.frames import arrow_of
from vantrel.replacing.values.keys import keys_of

WORDS = ["NULL", "\\N", "n/a", "N/A", "-", "?"]
GAPS: st.SearchStrategy[Any] = st.sampled_from([None, "", "  ", float("nan"), *WORDS])
# Python strips these, Arrow does not.
TEXTS = st.text(st.characters(codec="utf-8", exclude_characters="\x1c\x1d\x1e\x1f\x85"), max_size=8)
KEYS = st.one_of(st.integers(0, 5), st.sampled_from(["1", "2.0", "007", "", None, 3.0]), TEXTS)
GENDERS = st.sampled_from(["f", "m", "x", "Mrs", "", None, "??"])
COUNTRIES = st.sampled_from(["GB", "germany", "", None, "Atlantis"])
ROWS = st.lists(
    st.tuples(KEYS, GENDERS, COUNTRIES, *[st.one_of(GAPS, TEXTS)] * 3, TEXTS), max_size=8
)
NAMES = ["id", "sex", "land", "vorname", "mail", "tel", "rest"]
COLUMNS = {
    "gender": "sex",
    "country": "land",
    "firstname": "vorname",
    "email": "mail",
    "mobile_number": "tel",
}
MADE = ["vorname", "mail", "tel"]


def is_gap(cell: object) -> bool:
    return cell is None or cell != cell or str(cell).strip() in {"", *WORDS}


def replaced(df: pd.DataFrame) -> pd.DataFrame:
    out: pd.DataFrame = vantrel.replace(df, "id", SECRET, columns=COLUMNS)
    return out


@settings(max_examples=60)
@given(rows=ROWS, data=st.data())
def test_what_is_no_person_stays_and_people_do_not_depend_on_their_place(
    rows: list[tuple[Any, ...]], data: st.DataObject
) -> None:
    df = pd.DataFrame(rows, columns=NAMES, dtype=object)
    if len(df) and df["id"].map(is_gap).all():
        return  # is refused
    out = replaced(df)
    untouched = [name for name in NAMES if name not in MADE]
    pd.testing.assert_frame_equal(out[untouched], df[untouched])
    for name in MADE:
        for old, new in zip(df[name], out[name], strict=True):
            assert (repr(old) == repr(new)) if is_gap(old) else not is_gap(new) and old != new
    order = data.draw(st.permutations(range(len(df))))
    shuffled = df.iloc[order]
    key = keys_of([arrow_of(df, ["id"]).column(0).combine_chunks()]).to_pylist()
    told = df[["sex", "land", "vorname"]].groupby(key).nunique(dropna=False)
    if told.empty or told.max(axis=None) == 1:  # or else the first row that tells it counts
        pd.testing.assert_frame_equal(replaced(shuffled), out.iloc[order])
