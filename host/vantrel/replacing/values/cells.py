"""Puts made-up values into the cells of a column that are no gaps, in the column's own type."""

from __future__ import annotations

from collections.abc import Callable

import pyarrow as pa
import pyarrow.compute as pc

from vantrel.errors import ReplaceError
from vantrel.replacing.values.gaps import is_gap


def put_in(
    made: pa.Array, column: pa.Array, name: str, read: Callable[[pa.Array], pa.Array] | None = None
) -> pa.Array:
    """Gives a column with made-up values; gaps, such as blank cells, stay as they are.

    Args:
        made: A value for each row, a string where the column has texts.
        column: The values that are replaced.
        name: What an error calls the column.
        read: Makes what can be cast to the column's type, where that is not of texts; if None, it
            takes the digits of telephone numbers.

    Raises:
        ReplaceError: The column's type cannot hold them.
    """
    kind = column.type
    if pa.types.is_dictionary(kind):
        return encoded_as(put_in(made, column.dictionary_decode(), name, read), kind)
    if pa.types.is_null(kind):
        return column
    try:
        if holds_texts(kind):
            return _among_texts(made, column.cast(pa.string())).cast(kind)
        is_there = pc.and_not(column.is_valid(), pc.is_null(column, nan_is_null=True))
        return pc.if_else(is_there, (read or _numbers)(made).cast(kind), column)
    except (pa.ArrowInvalid, pa.ArrowNotImplementedError) as error:
        raise ReplaceError(
            f"Column {name!r} is of type {kind}, which cannot hold what is made up for it: make it"
            " text, or keep it."
        ) from error


def holds_texts(kind: pa.DataType) -> bool:
    """Whether values of a type are texts, or bytes that may be."""
    kinds = (pa.string(), pa.large_string(), pa.string_view(), pa.binary(), pa.large_binary())
    return kind in kinds


def _among_texts(made: pa.Array, texts: pa.Array) -> pa.Array:
    gaps = is_gap(texts)
    return pc.if_else(pa.array(gaps), texts, made) if gaps.any() else made


def encoded_as(column: pa.Array, kind: pa.DictionaryType) -> pa.Array:
    """Encodes values with indices of 32 bits: there may be more of them than there were before."""
    encoded = column.dictionary_encode()
    return pa.DictionaryArray.from_arrays(encoded.indices, encoded.dictionary, ordered=kind.ordered)


def _numbers(made: pa.Array) -> pa.Array:
    """Leaves nothing but the digits of telephone numbers; what has letters is no number."""
    return pc.replace_substring_regex(made, "[^0-9A-Za-z]+", "")
