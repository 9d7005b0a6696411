"""Writes made-up values in the place of real ones that are left in texts."""

from __future__ import annotations

import re
from collections import defaultdict
from collections.abc import Iterable
from typing import NamedTuple

import pyarrow as pa

from vantrel.errors import ReplaceError
from vantrel.replacing.leaks.exact import Span, found
from vantrel.replacing.leaks.search import Value, Wanted
from vantrel.replacing.values.keys import is_text
from vantrel.wording import shown

_ADDRESS = re.compile(r"\w[\w.%+'&-]*@\w+(?:[.-]+\w+)*")


class _Word(NamedTuple):
    """What a person may be known by in a text.

    Attributes:
        attribute: What it is.
        real: What may stand in the text.
        made: What takes its place.
        address: What takes the place of an e-mail address that has it in it; "" if nothing does.
    """

    attribute: str
    real: str
    made: str
    address: str


def scrubbed(texts: pa.Array, values: Iterable[Value], name: str) -> pa.Array:
    """Writes the made-up values of each row in the place of its real ones, by whole words.

    An e-mail address that has one in it becomes the made-up one: with another name in it, it may be
    somebody's.

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
    rows: defaultdict[int, list[_Word]] = defaultdict(list)
    for (attribute, real, made, addresses), may_have in wanted.maybe_in(texts):
        for row in may_have.tolist():
            if made is not None and (new := made[row].as_py()) is not None:
                address = "" if addresses is None else addresses[row].as_py()
                rows[row].append(_Word(attribute, real[row].as_py(), str(new), address))
    cells = texts.cast(pa.string()).to_pylist() if rows else []
    for row, known in rows.items():
        cells[row] = _scrubbed(cells[row], known)
    return pa.array(cells, pa.string()).cast(texts.type) if rows else texts


def _scrubbed(text: str, words: list[_Word]) -> str:
    """Replaces all at once, so that nothing is replaced that was made up."""
    # The longest first: an e-mail address has names in it, and so may a user name.
    words.sort(key=lambda each: len(each.real), reverse=True)
    addresses = [each.span() for each in _ADDRESS.finditer(text)] if "@" in text else []
    pieces: dict[Span, str] = {}
    for attribute, real, made, address in words:
        for span in found(attribute, text, real):
            around = [each for each in addresses if address and _overlap(each, span)]
            starts, ends = zip(span, *around, strict=True)
            start, end = min(starts), max(ends)
            if not any(_overlap(other, (start, end)) for other in pieces):
                new = address if around else made
                pieces[start, end] = _in_case_of(text[start:end], new)
    for (start, end), new in sorted(pieces.items(), reverse=True):
        text = text[:start] + new + text[end:]
    return text


def _overlap(one: Span, other: Span) -> bool:
    return one[0] < other[1] and other[0] < one[1]


def _in_case_of(old: str, new: str) -> str:
    if old.isupper() and len(old) > 1:
        return new.upper()
    return new.lower() if old.islower() else new
