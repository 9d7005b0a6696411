"""Columns and frames of any dtype, with indexes and names of any kind."""

from collections.abc import Callable
from typing import Any

import numpy as np
import pandas as pd
from hypothesis import strategies as st

from support.fuzzing import any_text, odd_values, row_numbers, telling

try:
    import pyarrow as pa
except ImportError:
    pa = None

_words = st.one_of(telling, telling, any_text, st.none())
_whole = st.integers(-(2**63), 2**63 - 1)
_days = st.datetimes(min_value=pd.Timestamp(1700, 1, 1), max_value=pd.Timestamp(2200, 1, 1))

# From the name of a kind to its values and its dtype.
KINDS: dict[str, tuple[st.SearchStrategy[Any], Any]] = {
    "mixed": (st.one_of(telling, telling, odd_values), "object"),
    "telling": (telling, "object"),
    "str": (_words, "str"),
    "string": (_words, "string"),
    "category": (_words, "category"),
    "numbers as categories": (st.integers(0, 3), "category"),
    "int": (_whole, "int64"),
    "Int": (st.one_of(_whole, st.none()), "Int64"),
    "float": (st.floats(), "float64"),
    "complex": (st.complex_numbers(), "complex128"),
    "bool": (st.booleans(), "bool"),
    "boolean": (st.one_of(st.booleans(), st.none()), "boolean"),
    "datetime": (_days, "datetime64[ns]"),
    "aware": (_days, "datetime64[ns, UTC]"),
    "timedelta": (st.timedeltas(pd.Timedelta(-9, "D"), pd.Timedelta(9, "D")), "timedelta64[ns]"),
    "period": (_days.map(lambda day: pd.Period(day, "D")), "period[D]"),
    "interval": (st.integers(0, 3).map(lambda i: pd.Interval(i, i + 1)), "interval"),
    "sparse": (st.floats(), pd.SparseDtype("float64")),
    "lists": (st.lists(telling, max_size=3), "object"),
    "arrays": (st.lists(st.integers(0, 3), max_size=3).map(np.array), "object"),
    "missing": (st.sampled_from([None, float("nan"), pd.NA, pd.NaT]), "object"),
}
if pa is not None:
    KINDS |= {
        "arrow text": (_words, pd.ArrowDtype(pa.string())),
        "arrow large text": (_words, pd.ArrowDtype(pa.large_string())),
        "arrow int": (st.one_of(_whole, st.none()), pd.ArrowDtype(pa.int64())),
        "arrow bool": (st.one_of(st.booleans(), st.none()), pd.ArrowDtype(pa.bool_())),
        "arrow lists": (st.lists(telling, max_size=3), pd.ArrowDtype(pa.list_(pa.string()))),
        "arrow null": (st.none(), pd.ArrowDtype(pa.null())),
        "arrow categories": (
            _words, pd.ArrowDtype(pa.dictionary(pa.int32(), pa.string()))
        ),
    }  # fmt: skip


@st.composite
def indexes(draw: st.DrawFn, rows: int) -> pd.Index:
    """An index: the usual one, or one that starts late, repeats, has texts, days or levels."""
    kinds = ["usual"] * 10 + ["late", "equal", "text", "days", "levels"]
    kind = draw(st.sampled_from(kinds))
    if kind == "levels":
        return pd.MultiIndex.from_arrays([[i % 2 for i in range(rows)], list(range(rows))])
    made: dict[str, Callable[[], Any]] = {
        "usual": lambda: pd.RangeIndex(rows),
        "late": lambda: pd.RangeIndex(5, 5 + rows),
        "equal": lambda: pd.Index([1] * rows),
        "text": lambda: pd.Index([f"row {i}" for i in range(rows)]),
        "days": lambda: pd.date_range("2020-01-01", periods=rows),
    }
    index: pd.Index = made[kind]()
    return index


@st.composite
def in_turn[T](draw: st.DrawFn, values: st.SearchStrategy[T], rows: int) -> list[T]:
    """So many values; where they are many, a few of them come again and again."""
    some = draw(st.lists(values, min_size=min(rows, 6), max_size=min(rows, 6)))
    return [some[i % len(some)] for i in range(rows)]


@st.composite
def columns(draw: st.DrawFn, rows: int | None = None, index: pd.Index | None = None) -> pd.Series:
    """A column of any kind whose values that kind can hold."""
    values, dtype = KINDS[draw(st.sampled_from(sorted(KINDS)))]
    if rows is None:
        rows = draw(row_numbers)
    drawn: Any = draw(in_turn(values, rows))
    if index is None:
        index = draw(indexes(rows))
    try:
        if dtype == "object":
            drawn = _as_items(drawn)
        column: pd.Series = pd.Series(drawn, index=index, dtype=dtype)
    except (ValueError, TypeError, OverflowError):  # half a character, for example
        column = pd.Series(["female"] * rows, index=index)
    return column


@st.composite
def mostly(draw: st.DrawFn, usual: st.SearchStrategy[Any], rows: int, index: pd.Index) -> pd.Series:
    """A column of usual texts, one of which may be odd, or now and then one of any kind."""
    kind = draw(st.sampled_from(["usual"] * 6 + ["one odd", "any"]))
    if kind == "any":
        return draw(columns(rows, index))
    values: list[Any] = draw(in_turn(usual, rows))
    dtype = draw(st.sampled_from(["object", "object", "str", "category"]))
    if kind == "one odd" and rows:
        values[draw(st.integers(0, rows - 1))] = draw(odd_values)
        dtype = "object"
    return pd.Series(_as_items(values), index=index, dtype=dtype)


@st.composite
def alike(draw: st.DrawFn, *usual: st.SearchStrategy[Any]) -> list[pd.Series]:
    """Columns of mostly usual values; now and then one has other rows than the first."""
    rows = draw(row_numbers)
    index = draw(indexes(rows))
    made = [draw(mostly(usual[0], rows, index))]
    for values in usual[1:]:
        if draw(st.integers(0, 9)) == 0:
            rows = draw(row_numbers)
            index = draw(indexes(rows))
        made.append(draw(mostly(values, rows, index)))
    return made


def _as_items(drawn: list[Any]) -> np.ndarray[Any, Any]:
    """Keeps lists and arrays whole instead of making a table of them."""
    items = np.empty(len(drawn), dtype="object")
    for i, value in enumerate(drawn):
        items[i] = value
    return items


@st.composite
def frames(draw: st.DrawFn, usual: dict[str, st.SearchStrategy[Any]]) -> pd.DataFrame:
    """A frame of named columns of mostly usual values.

    Some columns may be left out or come twice, and there may be others.
    """
    rows = draw(row_numbers)
    index = draw(indexes(rows))
    kept = [name for name in usual if draw(st.integers(0, 19)) > 0]
    other = st.one_of(st.sampled_from(sorted(usual)), any_text, st.none())
    more = [draw(other)] if draw(st.integers(0, 4)) == 0 else []
    made = [draw(mostly(usual[name], rows, index)) for name in kept]
    made += [draw(columns(rows, index)) for _ in more]
    if not made:
        return pd.DataFrame(index=index)
    frame = pd.concat(made, axis="columns")
    frame.columns = pd.Index([*kept, *more], dtype="object")
    return frame
