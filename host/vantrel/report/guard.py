"""Takes off what kept spreadsheets from running the cells of a sample."""

from __future__ import annotations

from typing import Any

import pandas as pd

from vantrel.tables.csv_files import _RUNNABLE

_GUARDED = tuple(f"'{start}" for start in _RUNNABLE)


def unguarded(df: pd.DataFrame) -> pd.DataFrame:
    """Takes one apostrophe off each text and column name that was guarded with it.

    Args:
        df: A table of texts, as read from a CSV file that was made safe for spreadsheets.
    """
    plain = df.apply(_unguarded)
    return plain.set_axis(_unguarded(df.columns.to_series()), axis="columns")


def _unguarded(texts: pd.Series[Any]) -> pd.Series[Any]:
    return texts.mask(texts.str.startswith(_GUARDED, na=False), texts.str.removeprefix("'"))
