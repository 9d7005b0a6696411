"""Keeps spreadsheets from running cells as formulas, by an apostrophe before them."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any

import pandas as pd

from vantrel.tables.database import quoted

# A spreadsheet runs what begins with the first four, some also behind what they take for a blank,
# or as they are written among Chinese and Japanese characters.
_RUNNABLE = ("=", "+", "-", "@", "\t", "\r", "\n", "＝", "＋", "－", "＠")
_GUARDED = tuple(f"'{start}" for start in _RUNNABLE)


def guarded(df: pd.DataFrame) -> pd.DataFrame:
    """Puts an apostrophe before each text and column name that a spreadsheet would run."""
    return _changed(df, lambda texts: texts.mask(_begin(texts, _RUNNABLE), "'" + texts))


def unguarded(text: str) -> str:
    """Takes off the apostrophe that :func:`guarded` has put before a text, and no other."""
    return text[1:] if text.startswith(_GUARDED) else text


def unguarded_in_sql(column: str) -> str:
    """The same of a column in SQL."""
    begins = " OR ".join(f"starts_with({column}, {quoted(start)})" for start in _GUARDED)
    return f"CASE WHEN {begins} THEN substr({column}, 2) ELSE {column} END"


def _changed(df: pd.DataFrame, change: Callable[[pd.Series[Any]], pd.Series[Any]]) -> pd.DataFrame:
    return df.apply(change).set_axis(change(df.columns.to_series()), axis="columns")


def _begin(texts: pd.Series[Any], starts: tuple[str, ...]) -> pd.Series[bool]:
    return texts.str.startswith(starts, na=False)
