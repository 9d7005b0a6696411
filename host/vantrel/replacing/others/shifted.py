"""Moves all dates of a person by one number of days, so that what is between them stays."""

from __future__ import annotations

from typing import Any, NamedTuple

import numpy as np
import pyarrow as pa
import pyarrow.compute as pc

from vantrel.errors import ReplaceError
from vantrel.replacing.making.pools import NAME_BITS
from vantrel.replacing.others.action import FORMS
from vantrel.replacing.others.dates import FIRST_DAY, LAST_DAY, read_dates, written
from vantrel.replacing.values.cells import encoded_as, put_in
from vantrel.replacing.values.keys import Digests, as_texts, is_text
from vantrel.wording import shown

# Of the word that chooses a last name the bits that choose nothing: no copy shows any of them.
_WORD = 1
_BITS = 64 - NAME_BITS

_IN_A_DAY = {"s": 86_400, "ms": 86_400 * 10**3, "us": 86_400 * 10**6, "ns": 86_400 * 10**9}


class Shifted(NamedTuple):
    """A column whose dates were moved.

    Attributes:
        column: The new values.
        is_lost: Where there is none, as there was no date before, or none so early or late.
    """

    column: pa.Array
    is_lost: Any


def days_of(digests: Digests, most: int) -> Any:
    """Gives each person a number of days from 1 to ``most`` up or down."""
    bits = digests[:, _WORD] & np.uint64((1 << _BITS) - 1)
    chosen = (bits * np.uint64(2 * most) >> np.uint64(_BITS)).astype(np.int64)
    return np.where(chosen < most, chosen - most, chosen - most + 1)


def shifted(column: pa.Array, name: str, days: Any, form: str) -> Shifted:
    """Moves dates.

    Args:
        column: Dates, times with dates, or texts or whole numbers that are dates of a form.
        name: What an error calls the column.
        days: The number of days for each row.
        form: The form of texts.

    Raises:
        ReplaceError: The column is of another type.
    """
    kind = column.type
    if pa.types.is_dictionary(kind):
        moved, is_lost = shifted(column.dictionary_decode(), name, days, form)
        return Shifted(encoded_as(moved, kind), is_lost)
    if not holds_dates(kind):
        raise ReplaceError(
            f"Column {shown(repr(name))} is of type {kind}, which holds no dates: 'blank' empties"
            " it."
        )
    if pa.types.is_null(kind):
        return Shifted(column, np.zeros(len(column), dtype=bool))
    if pa.types.is_timestamp(kind):
        return _times(column, days)
    if pa.types.is_date(kind):
        moved, is_lost = _times(column.cast(pa.timestamp("s")), days)
        return Shifted(moved.cast(kind), is_lost)
    return _texts(column, name, days, form or FORMS[0])


def holds_dates(kind: pa.DataType) -> bool:
    """Whether values of a type are dates, or may be."""
    tests = (pa.types.is_null, pa.types.is_timestamp, pa.types.is_date, pa.types.is_integer)
    return is_text(kind) or any(test(kind) for test in tests)


def _times(column: pa.Array, days: Any) -> Shifted:
    """Moves times by whole days of their time zone, in which the time of day stays."""
    kind = column.type
    if kind.tz is not None:
        local, is_lost = _times(pc.local_timestamp(column), days)
        return Shifted(
            pc.assume_timezone(local, kind.tz, ambiguous="earliest", nonexistent="latest"), is_lost
        )
    in_a_day = _IN_A_DAY[kind.unit]
    is_there = column.is_valid().to_numpy(zero_copy_only=False)
    times = column.view(pa.int64()).fill_null(0).to_numpy(zero_copy_only=False)
    last = min(LAST_DAY, np.iinfo(np.int64).max // in_a_day - 1)
    new = times // in_a_day + days
    is_out = (new < max(FIRST_DAY, -last)) | (new > last)
    moved = np.where(is_out, 0, times + np.where(is_out, 0, days) * in_a_day)
    return Shifted(pa.array(moved, mask=is_out | ~is_there).view(kind), is_out & is_there)


def _texts(column: pa.Array, name: str, days: Any, form: str) -> Shifted:
    texts = as_texts(column).cast(pa.string())
    real = read_dates(texts, form)
    new = real.days + days
    is_moved = real.is_date & (new >= FIRST_DAY) & (new <= LAST_DAY)
    made = written(np.where(is_moved, new, 0), form, real.parts)
    made = put_in(made, column, name, read=lambda each: each)
    is_lost = ~is_moved & texts.is_valid().to_numpy(zero_copy_only=False)
    return Shifted(pc.if_else(pa.array(is_lost), pa.scalar(None, made.type), made), is_lost)
