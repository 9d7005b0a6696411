"""Tells how a table writes full names."""

from __future__ import annotations

from collections import Counter

import pandas as pd

from vantrel.detection.values import SAMPLE_SIZE

# The share of the values that must be written in one way, or else there is none.
_BY_FAR = 0.9


def full_names_of(column: pd.Series) -> str | None:
    """Tells in which way of its own a column is written, by its first 10,000 values.

    Names in scripts without capitals tell only where there are no others: "Last, First" and "LAST,
    First" are the same to them.

    Returns:
        One of ``vantrel.rows.form.FullNames``, or None where by far most are in none of these: in
        the usual order of a language, say, or all in capitals.
    """
    values = [str(value) for value in column.dropna().head(SAMPLE_SIZE).tolist()]
    telling = [value for value in values if value.lower() != value.upper()] or values
    ways = Counter(map(_way_of, telling))
    way, rows = ways.most_common(1)[0] if ways else (None, 0)
    return way if rows >= _BY_FAR * len(telling) else None


def _way_of(name: str) -> str | None:
    last, comma, first = (part.strip() for part in name.partition(","))
    if comma:
        is_last_in_capitals = _is_in_capitals(last) and not _is_in_capitals(first)
        way = "LAST, First" if is_last_in_capitals else "Last, First"
        return way if last and first and "," not in first else None
    capitals = [_is_in_capitals(word) for word in name.split()]
    if not any(capitals) or all(capitals):
        return None
    if capitals == sorted(capitals, reverse=True):
        return "LAST First"
    return "First LAST" if capitals == sorted(capitals) else None


def _is_in_capitals(text: str) -> bool:
    """Whether all letters are capitals, and it is no initial."""
    return len(text.rstrip(".")) > 1 and text.isupper()
