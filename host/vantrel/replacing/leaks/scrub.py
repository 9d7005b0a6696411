"""Writes made-up values in the place of real ones that are left in texts."""

from __future__ import annotations

from collections import defaultdict
from collections.abc import Iterable

import pyarrow as pa

from vantrel.errors import ReplaceError
from vantrel.replacing.leaks.exact import Span, found
from vantrel.replacing.leaks.search import Value, Wanted
from vantrel.replacing.values.keys import is_text
from vantrel.wording import shown


def scrubbed(texts: pa.Array, values: Iterable[Value], name: str) -> pa.Array:
    """Writes the made-up values of each row in the place of its real ones, by whole words.

    Args:
        texts: The cells of a column.
        values: What the people of the same rows are known by.
        name: The name of the column.
    """
    if not is_text(texts.type):
        raise ReplaceError(
            f"Column {shown(repr(name))} is of type {texts.type}, which has no text to scrub:"
            " 'blank' empties it."
        )
    wanted = Wanted(values)
    rows: defaultdict[int, list[tuple[str, str, str]]] = defaultdict(list)
    for (attribute, real, made), may_have in wanted.maybe_in(texts):
        for row in may_have.tolist():
            if made is not None and (new := made[row].as_py()) is not None:
                rows[row].append((attribute, real[row].as_py(), str(new)))
    cells = texts.cast(pa.string()).to_pylist() if rows else []
    for row, known in rows.items():
        cells[row] = _scrubbed(cells[row], known)
    return pa.array(cells, pa.string()).cast(texts.type) if rows else texts


def _scrubbed(text: str, values: list[tuple[str, str, str]]) -> str:
    """Replaces all at once, so that nothing is replaced that was made up."""
    # The longest first: an e-mail address has names in it, and so may a user name.
    values.sort(key=lambda each: len(each[1]), reverse=True)
    pieces: dict[Span, str] = {}
    for attribute, value, new in values:
        for start, end in found(attribute, text, value):
            if all(end <= other[0] or other[1] <= start for other in pieces):
                pieces[start, end] = _in_case_of(text[start:end], new)
    for (start, end), new in sorted(pieces.items(), reverse=True):
        text = text[:start] + new + text[end:]
    return text


def _in_case_of(old: str, new: str) -> str:
    if old.isupper() and len(old) > 1:
        return new.upper()
    return new.lower() if old.islower() else new
