"""Sorts values into collections by patterns."""

import re
from collections.abc import Iterable, Mapping
from typing import Any

import pandas as pd


def collections_from_mapping(
    seq: Iterable[Any], mapping: Mapping[str, str | None], ambiguous_key: str
) -> dict[str, list[Any]]:
    """Sorts values by the patterns that match them.

    The patterns are searched in each value's text without regard to case. A value that one
    pattern matches goes to the list of that pattern's key, a value that several match to the
    ambiguous list only, and a value that none matches to no list.

    Args:
        seq: The values. Repeated ones are looked at once, so that time is linear in their number.
        mapping: From key to pattern; a pattern of ``None`` matches nothing.
        ambiguous_key: The key of the values that several patterns match.

    Returns:
        From key to values in the order of first appearance, without repeats: the keys of
        ``mapping`` in its order, then ``ambiguous_key``, each with a list that may be empty.

    Raises:
        re.error: A pattern is no regular expression.
    """
    searches = {
        key: re.compile(pattern, re.IGNORECASE).search
        for key, pattern in mapping.items()
        if pattern is not None
    }
    collections: dict[str, list[Any]] = {key: [] for key in [*mapping, ambiguous_key]}
    for value in _distinct(seq):
        matching = [key for key, search in searches.items() if search(str(value))]
        if matching:
            collections[matching[0] if len(matching) == 1 else ambiguous_key].append(value)
    return collections


def _distinct(seq: Iterable[Any]) -> Iterable[Any]:
    """The values in the order of first appearance, without repeats."""
    if isinstance(seq, pd.Series) and isinstance(seq.dtype, pd.StringDtype):
        return seq.unique()  # pandas makes a Python object of each element only to iterate
    return dict.fromkeys(seq)
