"""Tells by whole names whether they are those of the people of the same rows, or of others."""

from __future__ import annotations

import re
from collections.abc import Sequence

import pandas as pd

from vantrel.detection.names import plain
from vantrel.detection.values import SAMPLE_SIZE

# The share of the rows whose names agree, or else they are of others.
_AGREEING = 0.5

_WORD = re.compile(r"[^\W\d_]+")


def are_of_others(table: pd.DataFrame, column: str, own: Sequence[Sequence[str]]) -> bool:
    """Whether the whole names of a column are mostly not those of the people of their rows.

    Names agree in any order and without some of their words. The first 10,000 rows tell; a column
    whose values may have been moved up to the first rows, as excerpts have them, tells nothing.

    Args:
        table: The table, or its beginning.
        column: The column of whole names.
        own: The columns of each name of these people: of a first and a last one, or a whole one.
    """
    first = table.head(SAMPLE_SIZE)
    names = [(column,), *own]
    if not all(_keeps_rows(first[each]) for columns in names for each in columns):
        return False
    rows = zip(*(_joined(first, columns) for columns in names), strict=True)
    agreeing = [_agree(name, told) for name, *told in rows if name and any(told)]
    return sum(agreeing) < _AGREEING * len(agreeing)


def _keeps_rows(column: pd.Series) -> bool:
    is_there = column.notna().to_numpy()
    return bool(is_there.all() or not is_there[: is_there.sum()].all())


def _joined(table: pd.DataFrame, columns: Sequence[str]) -> list[str]:
    cells = (map(_text, table[each], table[each].isna()) for each in columns)
    return [plain(" ".join(row)).strip() for row in zip(*cells, strict=True)]


def _text(cell: object, is_missing: object) -> str:
    return "" if is_missing else str(cell)


def _agree(name: str, own: Sequence[str]) -> bool:
    """Whether a name is one of a row's, but for initials; some scripts write it as one word."""
    words = {word for word in _WORD.findall(name) if len(word) > 1 or not word.isascii()}
    for each in map(_WORD.findall, own):
        if each and (words.issubset(each) or all(word in name for word in each)):
            return True
    return False
